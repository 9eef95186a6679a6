#include <tavrin/graphics/Primitive.hpp>

#include <tavrin/base/Exceptions.hpp>

namespace tavrin::graphics
{

PrimitiveConfig& PrimitiveConfig::renderBin(RenderBin bin)
{
    mRenderBin = bin;
    return *this;
}

PrimitiveConfig& PrimitiveConfig::vertexBuffer(const std::string& name,
                                               std::shared_ptr<VertexBuffer> buffer)
{
    mVertexBuffers.emplace_back(name, std::move(buffer));
    return *this;
}

PrimitiveConfig& PrimitiveConfig::uniform(const std::string& name, float value)
{
    mUniforms.emplace_back(name, value);
    return *this;
}

PrimitiveConfig& PrimitiveConfig::boundingSphere(const BoundingSphere& sphere)
{
    mBoundingSphere = sphere;
    return *this;
}

Primitive::Primitive(PrimitiveConfig config, std::shared_ptr<const ShaderProgram> program)
    : mConfig(std::move(config)), mProgram(std::move(program))
{
    if (mProgram == nullptr)
        throw logic_error("a primitive needs a shader program");
    for (const auto& [name, buffer] : mConfig.vertexBuffers())
    {
        if (buffer == nullptr)
            throw logic_error("the vertex buffer \"" + name + "\" is missing");
        if (buffer->numVertices() != numVertices())
            throw logic_error("the vertex buffer \"" + name + "\" has " +
                              std::to_string(buffer->numVertices()) + " vertices and \"" +
                              mConfig.vertexBuffers().front().first + "\" has " +
                              std::to_string(numVertices()));
    }
}

const VertexBuffer* Primitive::findBuffer(const std::string& name) const
{
    for (const auto& [bufferName, buffer] : mConfig.vertexBuffers())
        if (bufferName == name)
            return buffer.get();
    return nullptr;
}

std::size_t Primitive::numVertices() const
{
    const auto& buffers = mConfig.vertexBuffers();
    return buffers.empty() ? 0 : buffers.front().second->numVertices();
}

}
