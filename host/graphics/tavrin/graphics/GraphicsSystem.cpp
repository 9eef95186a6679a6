#include <tavrin/graphics/GraphicsSystem.hpp>

#include <tavrin/base/Exceptions.hpp>

namespace tavrin::graphics
{

namespace
{

/// A buffer that takes over the memory of a vector whose elements consist of floats.
template<typename Vector>
std::shared_ptr<VertexBuffer> makeBufferOf(Vector elements)
{
    using Element = typename Vector::value_type;
    constexpr std::size_t numComponents = sizeof(Element) / sizeof(float);
    static_assert(std::is_standard_layout_v<Element> && alignof(Element) == alignof(float));
    const auto owner = std::make_shared<const Vector>(std::move(elements));
    const std::span values(reinterpret_cast<const float*>(owner->data()),
                           owner->size() * numComponents);
    return std::make_shared<VertexBuffer>(owner, values, numComponents);
}

void check(ColorChannel channel)
{
    if (channel != ColorChannel::RGBA)
        throw logic_error("color layout " + std::to_string(static_cast<int>(channel)) +
                          " is not known; use 4 (RGBA)");
}

}

constinit const GraphicsSystem GraphicsSystem::mInstance;

std::shared_ptr<VertexBuffer> GraphicsSystem::makeBuffer(std::vector<Tensor<float, 3>> vertices)
{
    return makeBufferOf(std::move(vertices));
}

std::shared_ptr<VertexBuffer> GraphicsSystem::makeBuffer(std::vector<Color> colors,
                                                         ColorChannel channel)
{
    check(channel);
    return makeBufferOf(std::move(colors));
}

std::shared_ptr<VertexBuffer> GraphicsSystem::makeLargeBuffer(
    LargeVector<Tensor<float, 3>> vertices)
{
    return makeBufferOf(std::move(vertices));
}

std::shared_ptr<VertexBuffer> GraphicsSystem::makeLargeBuffer(LargeVector<Color> colors,
                                                              ColorChannel channel)
{
    check(channel);
    return makeBufferOf(std::move(colors));
}

std::shared_ptr<const ShaderProgram> GraphicsSystem::makeProgram(std::filesystem::path vertex,
                                                                 std::filesystem::path fragment,
                                                                 std::filesystem::path geometry)
{
    return std::make_shared<const ShaderProgram>(
        ShaderProgram{std::move(vertex), std::move(fragment), std::move(geometry)});
}

std::shared_ptr<Drawable> GraphicsSystem::makePrimitive(
    PrimitiveConfig config, std::shared_ptr<const ShaderProgram> program)
{
    return std::make_shared<Primitive>(std::move(config), std::move(program));
}

std::shared_ptr<Drawable> GraphicsSystem::makeArrows(std::vector<ArrowGlyph> arrows,
                                                     ShadingType shading)
{
    return std::make_shared<ArrowBatch>(std::move(arrows), shading);
}

}
