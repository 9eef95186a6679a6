#include "RenderTarget.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>
#include <array>

namespace tavrin::graphics::painter
{

namespace
{

constexpr GLint wantedSamples = 8;
constexpr GLenum depthFormat = GL_DEPTH_COMPONENT24;
constexpr std::array<GLenum, 2> bothBuffers{GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};

/// The largest number of samples that every format supports, up to the wanted number.
GLint supportedSamples()
{
    GLint most = 1;
    glGetIntegerv(GL_MAX_SAMPLES, &most);
    return std::clamp(most, 1, wantedSamples);
}

void attachSamples(const Renderbuffer& buffer, GLenum attachment, GLenum format, GLint numSamples,
                   GLsizei width, GLsizei height)
{
    glBindRenderbuffer(GL_RENDERBUFFER, buffer.name());
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, numSamples, format, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, buffer.name());
}

void attachTexture(const Texture& texture, GLenum attachment, GLint format, GLenum channels,
                   GLsizei width, GLsizei height)
{
    glBindTexture(GL_TEXTURE_2D, texture.name());
    glTexImage2D(GL_TEXTURE_2D, 0, format, width, height, 0, channels, GL_FLOAT, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glFramebufferTexture2D(GL_FRAMEBUFFER, attachment, GL_TEXTURE_2D, texture.name(), 0);
}

void checkFramebuffer()
{
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE ||
        glGetError() == GL_OUT_OF_MEMORY)
        throw runtime_error("the graphics system has not enough memory for the picture");
}

/// Averages the samples of an attachment into the same attachment of another framebuffer.
void resolve(const Framebuffer& samples, const Framebuffer& pixels, GLenum attachment,
             GLsizei width, GLsizei height)
{
    glBindFramebuffer(GL_READ_FRAMEBUFFER, samples.name());
    glReadBuffer(attachment);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, pixels.name());
    glDrawBuffer(attachment);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
}

ShaderProgram compositionFiles()
{
    const std::string folder = shaderFolder() + "transparency/";
    return {folder + "vertex.glsl", folder + "fragment.glsl", {}};
}

}

RenderTarget::Transparency::Transparency(GLsizei width, GLsizei height, GLint numSamples,
                                         GLuint depth)
    : composition(compositionFiles())
{
    glBindFramebuffer(GL_FRAMEBUFFER, samples.name());
    attachSamples(colorSamples, GL_COLOR_ATTACHMENT0, GL_RGBA32F, numSamples, width, height);
    attachSamples(weightSamples, GL_COLOR_ATTACHMENT1, GL_R32F, numSamples, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    checkFramebuffer();

    glBindFramebuffer(GL_FRAMEBUFFER, pixels.name());
    attachTexture(colors, GL_COLOR_ATTACHMENT0, GL_RGBA32F, GL_RGBA, width, height);
    attachTexture(weights, GL_COLOR_ATTACHMENT1, GL_R32F, GL_RED, width, height);
    checkFramebuffer();
}

RenderTarget::RenderTarget(GLsizei width, GLsizei height, bool hasTransparent)
    : mWidth(width), mHeight(height)
{
    const GLint numSamples = supportedSamples();
    glBindFramebuffer(GL_FRAMEBUFFER, mSamples.name());
    attachSamples(mColorSamples, GL_COLOR_ATTACHMENT0, GL_RGBA8, numSamples, width, height);
    attachSamples(mDepthSamples, GL_DEPTH_ATTACHMENT, depthFormat, numSamples, width, height);
    checkFramebuffer();

    glBindFramebuffer(GL_FRAMEBUFFER, mPixels.name());
    attachSamples(mColors, GL_COLOR_ATTACHMENT0, GL_RGBA8, 0, width, height);
    checkFramebuffer();

    if (hasTransparent)
        mTransparency =
            std::make_unique<Transparency>(width, height, numSamples, mDepthSamples.name());
}

void RenderTarget::beginOpaque()
{
    glBindFramebuffer(GL_FRAMEBUFFER, mSamples.name());
    glViewport(0, 0, mWidth, mHeight);
    glEnable(GL_MULTISAMPLE);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void RenderTarget::beginTransparent()
{
    glBindFramebuffer(GL_FRAMEBUFFER, mTransparency->samples.name());
    glDrawBuffers(bothBuffers.size(), bothBuffers.data());
    // Alpha is the product of the transmittances, all other channels are sums.
    const std::array<float, 4> noColor{0.0F, 0.0F, 0.0F, 1.0F};
    const std::array<float, 4> noWeight{};
    glClearBufferfv(GL_COLOR, 0, noColor.data());
    glClearBufferfv(GL_COLOR, 1, noWeight.data());
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE_MINUS_SRC_ALPHA);
}

std::vector<float> RenderTarget::depths()
{
    GLint drawTarget = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawTarget);
    glBindFramebuffer(GL_FRAMEBUFFER, mPixels.name());
    if (!mDepths)
    {
        mDepths.emplace();
        attachSamples(*mDepths, GL_DEPTH_ATTACHMENT, depthFormat, 0, mWidth, mHeight);
        checkFramebuffer();
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, mSamples.name());
    glBlitFramebuffer(0, 0, mWidth, mHeight, 0, 0, mWidth, mHeight, GL_DEPTH_BUFFER_BIT,
                      GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, mPixels.name());
    std::vector<float> depths(static_cast<std::size_t>(mWidth) * static_cast<std::size_t>(mHeight));
    glReadPixels(0, 0, mWidth, mHeight, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(drawTarget));
    return depths;
}

std::vector<std::uint8_t> RenderTarget::finish()
{
    resolve(mSamples, mPixels, GL_COLOR_ATTACHMENT0, mWidth, mHeight);
    if (mTransparency)
    {
        const Transparency& layer = *mTransparency;
        for (const GLenum attachment : bothBuffers)
            resolve(layer.samples, layer.pixels, attachment, mWidth, mHeight);
        glBindFramebuffer(GL_FRAMEBUFFER, mPixels.name());
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        layer.composition.use();
        layer.composition.setTextureUnit("u_colors", 0);
        layer.composition.setTextureUnit("u_weights", 1);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, layer.colors.name());
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D, layer.weights.name());
        glActiveTexture(GL_TEXTURE0);
        glBindVertexArray(layer.noVertices.name());
        glDrawArrays(GL_TRIANGLES, 0, 3);
        glDisable(GL_BLEND);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, mPixels.name());
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(mWidth) *
                                     static_cast<std::size_t>(mHeight) * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, mWidth, mHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    if (glGetError() == GL_OUT_OF_MEMORY)
        throw runtime_error("the graphics system has not enough memory for the picture");
    const std::size_t rowSize = static_cast<std::size_t>(mWidth) * 4;
    for (std::size_t top = 0, bottom = pixels.size(); top + rowSize < bottom; top += rowSize)
    {
        bottom -= rowSize;
        std::swap_ranges(pixels.data() + top, pixels.data() + top + rowSize,
                         pixels.data() + bottom);
    }
    return pixels;
}

}
