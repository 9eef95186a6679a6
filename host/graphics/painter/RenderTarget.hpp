#pragma once

#include "GlObjects.hpp"
#include "Program.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <memory>
#include <optional>

namespace tavrin::graphics::painter
{

/// The framebuffers for a tile of the picture, with several samples per pixel. Opaque drawables are
/// drawn first. Transparent ones are accumulated separately and composited at the end.
class RenderTarget
{
public:
    /// Throws `runtime_error` if memory is short.
    RenderTarget(GLsizei width, GLsizei height, bool hasTransparent);

    /// Clears the tile, which becomes transparent.
    void beginOpaque();
    void beginTransparent();
    /// The depth of each pixel after what has been drawn so far, 0 (near) to 1, in rows from below.
    /// Drawing may continue afterwards.
    std::vector<float> depths();
    /// The pixels in rows from the top, with colors multiplied by their alpha.
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
    /// Created when depths are read for the first time.
    std::optional<Renderbuffer> mDepths;
    std::unique_ptr<Transparency> mTransparency;
};

}
