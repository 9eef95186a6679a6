#include <tavrin/graphics/ObjectRenderer.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <utility>

namespace tavrin::graphics
{

ObjectRenderer::ObjectRenderer(const GraphicsSystem& system, ShadingType shading)
    : mSystem(system), mShading(shading)
{
}

void ObjectRenderer::reserve(ObjectType type, unsigned long count)
{
    if (type != ObjectType::Arrow && type != ObjectType::TubeArrow)
        throw logic_error("object type " + std::to_string(static_cast<int>(type)) +
                          " is not known; use 4 (arrow) or 5 (tube arrow)");
    mArrows.reserve(mArrows.size() + count);
}

ObjectRenderer& ObjectRenderer::addArrow(const Tensor<double, 3>& start,
                                         const Tensor<double, 3>& direction, double width,
                                         const Color& color, bool tube)
{
    mArrows.push_back({start, direction, width, color, tube});
    return *this;
}

std::shared_ptr<Drawable> ObjectRenderer::commit()
{
    return mSystem.makeArrows(std::exchange(mArrows, {}), mShading);
}

}
