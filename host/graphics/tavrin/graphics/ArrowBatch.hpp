#pragma once

#include <tavrin/graphics/Drawable.hpp>
#include <tavrin/value/Color.hpp>

#include <vector>

namespace tavrin::graphics
{

/// How glyphs are shaded.
enum class ShadingType
{
    /// A head light with ambient, diffuse and specular parts, computed for every pixel.
    Phong = 2
};

/// An arrow from `start` to `start + direction`.
struct ArrowGlyph
{
    Tensor<double, 3> start;
    Tensor<double, 3> direction;
    /// The thickness of the shaft, in the unit of `start`. The head is wider by a constant factor,
    /// and a constant share of the length.
    double width;
    Color color;
    /// A round shaft with a cone, or else a flat arrow that faces the viewer.
    bool tube;
};

/// Arrows that are drawn together.
class TAVRIN_API ArrowBatch : public Drawable
{
public:
    ArrowBatch(std::vector<ArrowGlyph> arrows, ShadingType shading);

    const std::vector<ArrowGlyph>& arrows() const { return mArrows; }
    ShadingType shading() const { return mShading; }

    /// Around the middle of the box of all finite starts and ends; not the smallest.
    BoundingSphere boundingSphere() const override { return mBoundingSphere; }

private:
    std::vector<ArrowGlyph> mArrows;
    ShadingType mShading;
    BoundingSphere mBoundingSphere;
};

}
