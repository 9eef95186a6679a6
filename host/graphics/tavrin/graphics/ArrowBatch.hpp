#pragma once

#include <tavrin/graphics/Drawable.hpp>
#include <tavrin/value/Color.hpp>

#include <vector>

namespace tavrin::graphics
{

/// How glyphs are shaded.
enum class ShadingType
{
    /// Ambient, diffuse and specular reflection of a light near the eye, computed for every pixel.
    Phong = 2
};

/// An arrow from `start` to `start + direction`.
struct ArrowGlyph
{
    Tensor<double, 3> start;
    Tensor<double, 3> direction;
    /// The thickness of the shaft, in the unit of `start`. The head is wider by a constant factor and
    /// takes a constant fraction of the length.
    double width;
    Color color;
    /// Whether the arrow is a round shaft with a cone; otherwise it is flat and faces the viewer.
    bool tube;
};

/// Arrows that are drawn together.
class TAVRIN_API ArrowBatch : public Drawable
{
public:
    ArrowBatch(std::vector<ArrowGlyph> arrows, ShadingType shading);

    const std::vector<ArrowGlyph>& arrows() const { return mArrows; }
    ShadingType shading() const { return mShading; }

    /// Centered in the bounding box of all finite starts and ends, and so not the smallest sphere.
    BoundingSphere boundingSphere() const override { return mBoundingSphere; }

private:
    std::vector<ArrowGlyph> mArrows;
    ShadingType mShading;
    BoundingSphere mBoundingSphere;
};

}
