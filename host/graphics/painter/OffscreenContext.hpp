#pragma once

#include <epoxy/egl.h>

#include <string>

namespace tavrin::graphics::painter
{

/// An OpenGL 3.3 core context without a display, current in the thread that created it.
class OffscreenContext
{
public:
    /// Throws `runtime_error` "no OpenGL 3.3 context without a display: CAUSE".
    OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;
    ~OffscreenContext();

private:
    /// Returns what failed; empty on success.
    std::string openOn(EGLDisplay display);
    void close();

    EGLDisplay mDisplay = EGL_NO_DISPLAY;
    EGLSurface mSurface = EGL_NO_SURFACE;
    EGLContext mContext = EGL_NO_CONTEXT;
};

}
