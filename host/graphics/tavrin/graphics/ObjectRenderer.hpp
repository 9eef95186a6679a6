#pragma once

#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/GraphicsSystem.hpp>

namespace tavrin::graphics
{

/// The kinds of objects that a renderer takes.
enum class ObjectType
{
    Arrow = 4,
    TubeArrow = 5
};

/// Collects simple objects and combines them into one drawable.
class TAVRIN_API ObjectRenderer
{
public:
    ObjectRenderer(const GraphicsSystem& system, ShadingType shading);

    /// Reserves memory for `count` more objects of a type. Throws `logic_error` for an unknown type.
    void reserve(ObjectType type, unsigned long count);

    /// Appends an arrow from `start` to `start + direction`; see `ArrowGlyph`. An arrow that is not
    /// finite is not drawn, and one of length 0 is drawn as a dot.
    ObjectRenderer& addArrow(const Tensor<double, 3>& start, const Tensor<double, 3>& direction,
                             double width, const Color& color, bool tube);

    /// The drawable of all objects appended; the renderer is empty afterwards.
    std::shared_ptr<Drawable> commit();

private:
    const GraphicsSystem& mSystem;
    ShadingType mShading;
    std::vector<ArrowGlyph> mArrows;
};

}
