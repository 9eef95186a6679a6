#pragma once

#include <epoxy/gl.h>

#include <utility>

namespace tavrin::graphics::painter
{

/// Owns an OpenGL object of one kind, which is deleted with it.
template<typename Kind>
class GlObject
{
public:
    GlObject() { Kind::create(mName); }
    GlObject(GlObject&& other) noexcept : mName(std::exchange(other.mName, 0)) {}
    GlObject& operator=(GlObject&& other) noexcept
    {
        std::swap(mName, other.mName);
        return *this;
    }
    GlObject(const GlObject&) = delete;
    GlObject& operator=(const GlObject&) = delete;
    ~GlObject()
    {
        if (mName != 0)
            Kind::destroy(mName);
    }

    GLuint name() const { return mName; }

private:
    GLuint mName = 0;
};

struct BufferKind
{
    static void create(GLuint& name) { glGenBuffers(1, &name); }
    static void destroy(GLuint name) { glDeleteBuffers(1, &name); }
};
struct VertexArrayKind
{
    static void create(GLuint& name) { glGenVertexArrays(1, &name); }
    static void destroy(GLuint name) { glDeleteVertexArrays(1, &name); }
};
struct RenderbufferKind
{
    static void create(GLuint& name) { glGenRenderbuffers(1, &name); }
    static void destroy(GLuint name) { glDeleteRenderbuffers(1, &name); }
};
struct TextureKind
{
    static void create(GLuint& name) { glGenTextures(1, &name); }
    static void destroy(GLuint name) { glDeleteTextures(1, &name); }
};
struct FramebufferKind
{
    static void create(GLuint& name) { glGenFramebuffers(1, &name); }
    static void destroy(GLuint name) { glDeleteFramebuffers(1, &name); }
};

using Buffer = GlObject<BufferKind>;
using VertexArray = GlObject<VertexArrayKind>;
using Renderbuffer = GlObject<RenderbufferKind>;
using Texture = GlObject<TextureKind>;
using Framebuffer = GlObject<FramebufferKind>;

}
