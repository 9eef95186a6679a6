#include "PrimitivePainter.hpp"

#include "ViewUniforms.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>

namespace tavrin::graphics::painter
{

namespace
{

/// The number of vertices in a draw call; even, so that both ends of a segment are in the same one.
constexpr std::size_t verticesAtOnce = 1U << 16U;

GLenum modeOf(RenderPrimitives primitives)
{
    switch (primitives)
    {
    case RenderPrimitives::Lines:
        return GL_LINES;
    }
    throw logic_error("render primitives " + std::to_string(static_cast<int>(primitives)) +
                      " are not known; use 3 (lines)");
}

}

void PrimitivePainter::paint(const Primitive& primitive, const PictureLayout& layout,
                             const Frame& tile, Pass pass, WorkMeter& meter)
{
    const PrimitiveConfig& config = primitive.config();
    const GLenum mode = modeOf(config.primitives());
    if (primitive.numVertices() == 0)
        return;

    const Program& program = programFor(primitive.program());
    const Placement& placement = layout.extent().placement;
    useFor(program, layout, tile, pass);
    program.set("u_origin", narrowed(placement.center));
    program.set("u_scale", static_cast<float>(placement.scale));
    program.set("u_viewport",
                std::array{static_cast<float>(tile.width), static_cast<float>(tile.height)});
    for (const auto& [name, value] : config.uniforms())
        program.set(name, value);

    const VertexArray vertexArray;
    glBindVertexArray(vertexArray.name());
    std::vector<Buffer> buffers(config.vertexBuffers().size());
    for (std::size_t first = 0; first < primitive.numVertices(); first += verticesAtOnce)
    {
        const std::size_t count = std::min(verticesAtOnce, primitive.numVertices() - first);
        for (std::size_t i = 0; i < buffers.size(); ++i)
        {
            const auto& [name, values] = config.vertexBuffers()[i];
            const GLint location = program.attribute(name.c_str());
            if (location < 0)
                continue;
            const std::size_t size = values->numComponents();
            const auto part = values->values().subspan(first * size, count * size);
            glBindBuffer(GL_ARRAY_BUFFER, buffers[i].name());
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(part.size_bytes()), part.data(),
                         GL_STREAM_DRAW);
            glEnableVertexAttribArray(static_cast<GLuint>(location));
            glVertexAttribPointer(static_cast<GLuint>(location), static_cast<GLint>(size), GL_FLOAT,
                                  GL_FALSE, 0, nullptr);
        }
        glDrawArrays(mode, 0, static_cast<GLsizei>(count));
        mInFlight.endPortion();
        meter.advance(count);
    }
}

const Program& PrimitivePainter::programFor(const ShaderProgram& files)
{
    auto& program = mPrograms[{files.vertex, files.fragment, files.geometry}];
    if (program == nullptr)
        program = std::make_unique<Program>(files);
    return *program;
}

}
