#include "VectorPainter.hpp"

#include "ArrowMesh.hpp"
#include "Rim.hpp"

#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <algorithm>
#include <numbers>

namespace tavrin::graphics::painter
{

namespace
{

using Pixel = Canvas::Pixel;

/// Corners of the circles around a tube.
constexpr std::size_t numCircleCorners = 24;

/// A line from one position to another.
struct Segment
{
    Position start;
    Position direction;
    /// Pixels.
    double width;
    Color color;
};

/// The arrow or the segment of a scene, with what decides about the order of drawing.
struct Glyph
{
    double distance;
    double length;
    const ArrowGlyph* arrow = nullptr;
    Segment segment{};
};

bool isFinite(const Position& position)
{
    return std::ranges::all_of(position, [](double part) { return std::isfinite(part); });
}

/// The corners of the convex hull, counterclockwise with y upward: A. M. Andrew, "Another efficient
/// algorithm for convex hulls in two dimensions", Information Processing Letters 9, 1979.
std::vector<Pixel> convexHull(std::vector<Pixel> points)
{
    const auto turn = [](const Pixel& a, const Pixel& b, const Pixel& c)
    { return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]); };
    std::ranges::sort(points);
    std::vector<Pixel> hull;
    for (int side = 0; side < 2; ++side)
    {
        const std::size_t first = hull.size();
        for (const Pixel& point : points)
        {
            while (hull.size() >= first + 2 &&
                   turn(hull[hull.size() - 2], hull.back(), point) <= 0.0)
                hull.pop_back();
            hull.push_back(point);
        }
        hull.pop_back();
        std::ranges::reverse(points);
    }
    return hull;
}

Color darkened(const Color& color, float factor)
{
    return {color.red * factor, color.green * factor, color.blue * factor, color.alpha};
}

class GlyphDrawer
{
public:
    GlyphDrawer(const PictureLayout& layout, Canvas& canvas)
        : mPlacement(layout.extent().placement), mCamera(layout.camera()), mStyle(layout.style()),
          mCanvas(canvas)
    {
    }

    /// Nothing for a glyph that is not finite or fully transparent.
    std::optional<Glyph> glyphFor(const ArrowGlyph& arrow) const
    {
        if (!std::isfinite(arrow.width))
            return {};
        auto glyph =
            glyphAt(mPlacement(arrow.start), mPlacement.scale * arrow.direction, arrow.color.alpha);
        if (glyph)
            glyph->arrow = &arrow;
        return glyph;
    }
    std::optional<Glyph> glyphFor(const Segment& segment) const
    {
        auto glyph = glyphAt(segment.start, segment.direction, segment.color.alpha);
        if (glyph)
            glyph->segment = segment;
        return glyph;
    }

    void draw(const Glyph& glyph)
    {
        if (glyph.arrow == nullptr)
            drawSegment(glyph.segment);
        else if (glyph.arrow->tube)
            drawTube(*glyph.arrow);
        else
            drawFlat(*glyph.arrow);
    }

private:
    /// The axis of an arrow, in placed coordinates.
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

    std::optional<Glyph> glyphAt(const Position& start, const Position& direction,
                                 float alpha) const
    {
        if (!isFinite(start) || !isFinite(direction) || !(alpha > 0.0F))
            return {};
        return Glyph{.distance = mCamera.distance(start + 0.5 * direction),
                     .length = norm(direction)};
    }

    /// Like the arrow's vertex shader.
    Axis axisOf(const ArrowGlyph& arrow) const
    {
        constexpr double leastWidth = 1.0;
        constexpr double leastLength = 2.0;
        const Position direction = mPlacement.scale * arrow.direction;
        const double trueLength = norm(direction);
        Axis axis{.middle = mPlacement(arrow.start) + 0.5 * direction,
                  .along = trueLength > 0.0 ? direction / trueLength : mCamera.axes().right,
                  .side = {},
                  .length = 0.0,
                  .width = 0.0};
        const double leastUnit = std::max(mStyle.unit, 1.0) / mCamera.pixelsPerUnit(axis.middle);
        axis.length = std::max(trueLength, leastLength * leastUnit);
        axis.width = std::max(mPlacement.scale * std::abs(arrow.width), leastWidth * leastUnit);
        axis.side = cross(towardsEye(axis.middle), axis.along);
        if (norm(axis.side) < 1e-4)
            axis.side = cross(std::abs(axis.along[2]) < 0.7 ? Position(0.0, 0.0, 1.0)
                                                            : Position(1.0, 0.0, 0.0),
                              axis.along);
        axis.side /= norm(axis.side);
        return axis;
    }

    Position towardsEye(const Position& position) const
    {
        if (mCamera.isParallel())
            return mCamera.eye();
        const Position offset = mCamera.eye() - position;
        return offset / norm(offset);
    }

    void drawPolygon(std::span<const Pixel> corners, const Color& fill, const Rim& rim)
    {
        // The fill covers the inner half of the line.
        if (rim.width > 0.0)
            mCanvas.outlinePolygon(corners, rim.color, 2.0 * rim.width);
        mCanvas.fillPolygon(corners, fill);
    }

    void drawFlat(const ArrowGlyph& arrow)
    {
        const Axis axis = axisOf(arrow);
        std::vector<Pixel> corners;
        for (const auto& corner : ArrowMesh::flatOutline(ArrowMesh::flatHeadRadius))
            corners.push_back(mCamera.project(axis(corner[0], 0.0, corner[1])));
        drawPolygon(corners, arrow.color, rimFor(arrow.color, mStyle));
    }

    void drawTube(const ArrowGlyph& arrow)
    {
        const Axis axis = axisOf(arrow);
        const auto addCircle = [&](std::vector<Pixel>& points, double radius, double share)
        {
            for (std::size_t i = 0; i < numCircleCorners; ++i)
            {
                const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) /
                                     static_cast<double>(numCircleCorners);
                points.push_back(mCamera.project(
                    axis(radius * std::cos(angle), radius * std::sin(angle), share)));
            }
        };
        std::vector<Pixel> shaft;
        addCircle(shaft, ArrowMesh::shaftRadius, 0.0);
        addCircle(shaft, ArrowMesh::shaftRadius, ArrowMesh::neck);
        std::vector<Pixel> base;
        addCircle(base, ArrowMesh::tubeHeadRadius, ArrowMesh::neck);
        std::vector<Pixel> head = base;
        head.push_back(mCamera.project(axis(0.0, 0.0, 1.0)));

        // A line that separates overlapping tubes.
        const Rim rim{darkened(arrow.color, 0.55F), 0.4 * mStyle.unit};
        const bool pointsAway = dot(axis.along, towardsEye(axis(0.0, 0.0, ArrowMesh::neck))) < 0.0;
        if (!pointsAway)
            drawPolygon(convexHull(shaft), darkened(arrow.color, 0.9F), rim);
        drawPolygon(convexHull(head), arrow.color, rim);
        if (!pointsAway)
            return;
        drawPolygon(base, darkened(arrow.color, 0.75F), rim);
        drawPolygon(convexHull(shaft), darkened(arrow.color, 0.9F), rim);
    }

    void drawSegment(const Segment& segment)
    {
        const Stroke stroke{mCamera.project(segment.start),
                            mCamera.project(segment.start + segment.direction)};
        const Rim rim = rimFor(segment.color, mStyle);
        if (rim.width > 0.0)
            mCanvas.draw(stroke, rim.color, segment.width + 2.0 * rim.width);
        mCanvas.draw(stroke, segment.color, segment.width);
    }

    const Placement& mPlacement;
    const Camera& mCamera;
    const Style& mStyle;
    Canvas& mCanvas;
};

/// Calls the visitor with the segments of a primitive that has positions and colors.
template<typename Visitor>
void visitSegments(const Primitive& primitive, const PictureLayout& layout, Visitor visitor)
{
    const VertexBuffer* const positions = primitive.findBuffer("in_vertex");
    const VertexBuffer* const colors = primitive.findBuffer("in_color");
    if (positions == nullptr || positions->numComponents() != 3 || colors == nullptr ||
        colors->numComponents() != 4)
        return;
    float width = 1.0F;
    for (const auto& [name, value] : primitive.config().uniforms())
        if (name == "u_lineWidth")
            width = value;
    const auto placed = [&](std::size_t i)
    {
        const auto parts = positions->values().subspan(3 * i, 3);
        return layout.extent().placement(Position(parts[0], parts[1], parts[2]));
    };
    for (std::size_t i = 0; i + 1 < primitive.numVertices(); i += 2)
    {
        const Position start = placed(i);
        const auto parts = colors->values().subspan(4 * i, 4);
        visitor(Segment{.start = start,
                        .direction = placed(i + 1) - start,
                        .width = std::max(width * layout.style().unit, 1.0),
                        .color = {parts[0], parts[1], parts[2], parts[3]}});
    }
}

}

std::size_t numGlyphs(const Scene& scene)
{
    std::size_t count = 0;
    for (const auto& drawable : scene.drawables)
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get()))
            count += batch->arrows().size();
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable.get()))
            count += primitive->numVertices() / 2;
    return count;
}

void paintVectors(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter)
{
    GlyphDrawer drawer(layout, canvas);
    std::vector<Glyph> glyphs;
    const auto add = [&](const auto& shape)
    {
        if (const auto glyph = drawer.glyphFor(shape))
            glyphs.push_back(*glyph);
    };
    for (const auto& drawable : scene.drawables)
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get()))
            std::ranges::for_each(batch->arrows(), add);
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable.get()))
            visitSegments(*primitive, layout, add);
    // In a flat field, distances differ by rounding only.
    constexpr double sameDistance = 1e-6;
    std::ranges::stable_sort(
        glyphs, std::ranges::greater{},
        [](const Glyph& glyph)
        { return std::pair(std::round(glyph.distance / sameDistance), glyph.length); });
    for (const Glyph& glyph : glyphs)
    {
        drawer.draw(glyph);
        meter.advance(glyph.arrow != nullptr ? 1 : 2);
    }
}

}
