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

/// What the vertices of a primitive form.
enum class RenderPrimitives
{
    /// Independent segments: vertices 0 and 1, 2 and 3, and so on.
    Lines = 3
};

/// When a primitive is drawn.
enum class RenderBin
{
    Opaque = 0,
    /// After everything opaque, and blended whatever the order of drawing.
    Transparent = 1
};

/// The description of one primitive that a shader program draws. The setters return the
/// configuration for chaining. Without them: opaque, no buffers, no uniforms, an empty sphere.
class TAVRIN_API PrimitiveConfig
{
public:
    using Buffers = std::vector<std::pair<std::string, std::shared_ptr<VertexBuffer>>>;
    using Uniforms = std::vector<std::pair<std::string, float>>;

    explicit PrimitiveConfig(RenderPrimitives primitives) : mPrimitives(primitives) {}

    PrimitiveConfig& renderBin(RenderBin bin);
    /// The values of the program's vertex attribute of that name.
    PrimitiveConfig& vertexBuffer(const std::string& name, std::shared_ptr<VertexBuffer> buffer);
    /// The value of the program's uniform of that name.
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
    /// Throws `logic_error` where buffers have different numbers of vertices, or there is no
    /// program.
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
