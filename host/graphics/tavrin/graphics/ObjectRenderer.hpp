#pragma once

#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/GraphicsSystem.hpp>

namespace tavrin::graphics
{

/// The kinds of objects that a renderer draws.
enum class ObjectType
{
    Arrow = 4,
    TubeArrow = 5
};

/// Collects simple objects and makes one drawable of them.
class TAVRIN_API ObjectRenderer
{
public:
    ObjectRenderer(const GraphicsSystem& system, ShadingType shading);

    /// Room for that many more objects of a type. Throws `logic_error` for a type that is none.
    void reserve(ObjectType type, unsigned long count);

    /// Appends an arrow from `start` to `start + direction`; see `ArrowGlyph`. Any numbers will do:
    /// what is not finite is not drawn, and a direction of zeros is drawn as a dot.
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
