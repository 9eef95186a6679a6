#pragma once

#include <tavrin/graphics/Drawable.hpp>
#include <tavrin/graphics/ShaderProgram.hpp>
#include <tavrin/graphics/VertexBuffer.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavrin::graphics
{

/// How the vertices of a primitive are connected.
enum class RenderPrimitives
{
    /// Separate segments between vertices 0 and 1, 2 and 3, and so on.
    Lines = 3
};

/// When a primitive is drawn.
enum class RenderBin
{
    Opaque = 0,
    /// After everything opaque, blended independently of the order of drawing.
    Transparent = 1
};

/// The description of a primitive that a shader program draws. The setters return the configuration
/// for chaining. By default a primitive is opaque, without buffers or uniforms, and its bounding
/// sphere is empty.
class TAVRIN_API PrimitiveConfig
{
public:
    using Buffers = std::vector<std::pair<std::string, std::shared_ptr<VertexBuffer>>>;
    using Uniforms = std::vector<std::pair<std::string, float>>;

    explicit PrimitiveConfig(RenderPrimitives primitives) : mPrimitives(primitives) {}

    PrimitiveConfig& renderBin(RenderBin bin);
    /// Adds the values of a vertex attribute of the program.
    PrimitiveConfig& vertexBuffer(const std::string& name, std::shared_ptr<VertexBuffer> buffer);
    /// Adds the value of a uniform of the program.
    PrimitiveConfig& uniform(const std::string& name, float value);
    PrimitiveConfig& boundingSphere(const BoundingSphere& sphere);

    RenderPrimitives primitives() const { return mPrimitives; }
    RenderBin renderBin() const { return mRenderBin; }
    /// In the order in which they were given.
    const Buffers& vertexBuffers() const { return mVertexBuffers; }
    const Uniforms& uniforms() const { return mUniforms; }
    const BoundingSphere& boundingSphere() const { return mBoundingSphere; }

private:
    RenderPrimitives mPrimitives;
    RenderBin mRenderBin = RenderBin::Opaque;
    Buffers mVertexBuffers;
    Uniforms mUniforms;
    BoundingSphere mBoundingSphere;
};

/// A primitive and the program that draws it.
class TAVRIN_API Primitive : public Drawable
{
public:
    /// Throws `logic_error` if buffers have different numbers of vertices, or a buffer or the program
    /// is missing.
    Primitive(PrimitiveConfig config, std::shared_ptr<const ShaderProgram> program);

    const PrimitiveConfig& config() const { return mConfig; }
    const ShaderProgram& program() const { return *mProgram; }
    /// The buffer of that name, or null.
    const VertexBuffer* findBuffer(const std::string& name) const;
    std::size_t numVertices() const;

    BoundingSphere boundingSphere() const override { return mConfig.boundingSphere(); }

private:
    PrimitiveConfig mConfig;
    std::shared_ptr<const ShaderProgram> mProgram;
};

}
