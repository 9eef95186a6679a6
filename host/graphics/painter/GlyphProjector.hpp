#pragma once

#include "PictureLayout.hpp"

#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <cmath>
#include <vector>

namespace tavrin::graphics::painter
{

/// A line between two placed positions.
struct Segment
{
    Position start;
    Position end;
    /// Pixels.
    double width;
    Color color;
};

/// The area of a polygon without intersections.
template<typename Corners>
double areaOf(const Corners& corners)
{
    double twice = 0.0;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const auto& next = corners[(i + 1) % corners.size()];
        twice += corners[i][0] * next[1] - corners[i][1] * next[0];
    }
    return 0.5 * std::abs(twice);
}

/// The outlines of glyphs in the picture, in pixels, for everything that draws them as polygons.
class GlyphProjector
{
public:
    using Pixel = Canvas::Pixel;

    /// `layout` must outlive the projector.
    explicit GlyphProjector(const PictureLayout& layout)
        : mPlacement(layout.extent().placement), mCamera(layout.camera()),
          mUnit(std::max(layout.style().unit, 1.0))
    {
    }

    /// The corners of an arrow in the order of `ArrowMesh::flatOutline`.
    std::array<Pixel, 7> flat(const ArrowGlyph& arrow) const;

    /// The corners of a segment; those of a square where both ends are at one pixel.
    std::array<Pixel, 4> segment(const Segment& segment) const;

    /// The silhouette of a part of a tube, and how bright it is drawn.
    struct TubePart
    {
        std::vector<Pixel> corners;
        float brightness;
    };

    /// The shaft, the head and, where it faces the eye, the base of the head, the farthest first.
    std::vector<TubePart> tube(const ArrowGlyph& arrow) const;

private:
    /// The axis of an arrow in placed coordinates.
    struct Axis
    {
        Position middle;
        Position along;
        /// Perpendicular to the axis and to the direction toward the eye.
        Position side;
        double length;
        double width;

        /// A position across, toward the eye, and along the arrow, as in `ArrowMesh`.
        Position operator()(double across, double front, double share) const
        {
            return middle + width * across * side + width * front * cross(along, side) +
                   length * (share - 0.5) * along;
        }
    };

    /// The same as in the arrow's vertex shader.
    Axis axisOf(const ArrowGlyph& arrow) const;
    Position towardsEye(const Position& position) const;

    const Placement& mPlacement;
    const Camera& mCamera;
    /// Pixels per unit of the least width and length of an arrow.
    double mUnit;
};

}
