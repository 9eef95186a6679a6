#pragma once

#include "GlObjects.hpp"
#include "Program.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <memory>
#include <optional>

namespace tavrin::graphics::painter
{

/// Where a tile of the picture is drawn: several samples per pixel, opaque things first, then
/// transparent ones, which are added up apart and laid over at the end.
class RenderTarget
{
public:
    /// Throws `runtime_error` where there is not enough memory.
    RenderTarget(GLsizei width, GLsizei height, bool hasTransparent);

    void beginOpaque(const Color& background);
    void beginTransparent();
    /// The depth of each pixel as far as things have been drawn, 0 (near) to 1, from the lower row
    /// upwards. Drawing goes on afterwards.
    std::vector<float> depths();
    /// The pixels, from the lower row upwards; the colors are multiplied by their alpha.
    std::vector<std::uint8_t> finish();

private:
    struct Transparency
    {
        Renderbuffer colorSamples;
        Renderbuffer weightSamples;
        Framebuffer samples;
        Texture colors;
        Texture weights;
        Framebuffer pixels;
        VertexArray noVertices;
        Program composition;

        Transparency(GLsizei width, GLsizei height, GLint numSamples, GLuint depth);
    };

    GLsizei mWidth;
    GLsizei mHeight;
    Renderbuffer mColorSamples;
    Renderbuffer mDepthSamples;
    Framebuffer mSamples;
    Renderbuffer mColors;
    Framebuffer mPixels;
    /// Made when depths are read for the first time.
    std::optional<Renderbuffer> mDepths;
    std::unique_ptr<Transparency> mTransparency;
};

}
