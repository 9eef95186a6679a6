#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

namespace tavrin::graphics
{

/// The components of a color in a buffer.
enum class ColorChannel
{
    /// Red, green, blue and alpha.
    RGBA = 4
};

/// Creates drawables and their parts. Nothing is uploaded until a picture is painted, so drawables
/// can be created and read on a machine without a graphics library.
class TAVRIN_API GraphicsSystem
{
public:
    /// The only instance in this process.
    static const GraphicsSystem mInstance;

    GraphicsSystem(const GraphicsSystem&) = delete;
    GraphicsSystem& operator=(const GraphicsSystem&) = delete;

    /// Three components per vertex. Moving the vector in saves a copy.
    static std::shared_ptr<VertexBuffer> makeBuffer(std::vector<Tensor<float, 3>> vertices);
    /// As many components per vertex as there are channels. Moving the vector in saves a copy.
    static std::shared_ptr<VertexBuffer> makeBuffer(std::vector<Color> colors,
                                                    ColorChannel channel);
    /// The same for vectors that several threads have filled.
    static std::shared_ptr<VertexBuffer> makeLargeBuffer(LargeVector<Tensor<float, 3>> vertices);
    static std::shared_ptr<VertexBuffer> makeLargeBuffer(LargeVector<Color> colors,
                                                         ColorChannel channel);

    /// The files are not read until a picture is painted.
    static std::shared_ptr<const ShaderProgram> makeProgram(std::filesystem::path vertex,
                                                            std::filesystem::path fragment,
                                                            std::filesystem::path geometry);

    /// Throws what the constructor of `Primitive` throws.
    static std::shared_ptr<Drawable> makePrimitive(PrimitiveConfig config,
                                                   std::shared_ptr<const ShaderProgram> program);

    static std::shared_ptr<Drawable> makeArrows(std::vector<ArrowGlyph> arrows,
                                                ShadingType shading);

private:
    constexpr GraphicsSystem() = default;
};

}
