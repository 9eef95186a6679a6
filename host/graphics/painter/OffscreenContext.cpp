#include "OffscreenContext.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <epoxy/gl.h>

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace tavrin::graphics::painter
{

namespace
{

[[noreturn]] void fail(const std::string& cause)
{
    throw runtime_error("no OpenGL 3.3 context without a display: " + cause);
}

/// libepoxy ends the process if these are missing, so they are loaded here first.
void needLibraries()
{
    const auto isThere = [](const char* name)
    { return dlopen(name, RTLD_LAZY | RTLD_GLOBAL) != nullptr; };
    if (!isThere("libEGL.so.1"))
        fail("the library libEGL.so.1 cannot be loaded");
    if (!isThere("libOpenGL.so.0") && !isThere("libGL.so.1"))
        fail("neither library libOpenGL.so.0 nor libGL.so.1 can be loaded");
}

bool hasWord(const char* list, std::string_view word)
{
    if (list == nullptr)
        return false;
    return (' ' + std::string(list) + ' ').find(' ' + std::string(word) + ' ') != std::string::npos;
}

/// Displays that need no window system, in order of preference.
std::vector<EGLDisplay> displays()
{
    const char* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    std::vector<EGLDisplay> found;
    const auto add = [&](EGLDisplay display)
    {
        if (display != EGL_NO_DISPLAY)
            found.push_back(display);
    };
    if (hasWord(extensions, "EGL_EXT_platform_base"))
    {
        if (hasWord(extensions, "EGL_MESA_platform_surfaceless"))
            add(eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY,
                                         nullptr));
        std::array<EGLDeviceEXT, 16> devices{};
        EGLint count = 0;
        if (hasWord(extensions, "EGL_EXT_platform_device") &&
            hasWord(extensions, "EGL_EXT_device_enumeration") &&
            eglQueryDevicesEXT(devices.size(), devices.data(), &count) == EGL_TRUE)
            for (EGLint i = 0; i < count; ++i)
                add(eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr));
    }
    add(eglGetDisplay(EGL_DEFAULT_DISPLAY));
    return found;
}

}

OffscreenContext::OffscreenContext()
{
    needLibraries();
    // The exception describes the failure; further messages of the driver would be noise.
    setenv("EGL_LOG_LEVEL", "fatal", 0);
    std::string firstCause;
    for (const EGLDisplay display : displays())
    {
        const std::string cause = openOn(display);
        if (cause.empty())
            return;
        if (firstCause.empty())
            firstCause = cause;
        close();
    }
    fail(firstCause.empty() ? "EGL offers no display" : firstCause);
}

OffscreenContext::~OffscreenContext()
{
    close();
}

std::string OffscreenContext::openOn(EGLDisplay display)
{
    if (eglInitialize(display, nullptr, nullptr) != EGL_TRUE)
        return "EGL cannot be initialized";
    mDisplay = display;
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
        return "EGL does not offer OpenGL";

    const std::array<EGLint, 5> wanted{EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE,
                                       EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    const bool hasConfig =
        eglChooseConfig(display, wanted.data(), &config, 1, &count) == EGL_TRUE && count > 0;
    const bool needsNoSurface =
        hasWord(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context");
    const bool needsNoConfig =
        hasWord(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_no_config_context");
    if (!hasConfig && !(needsNoSurface && needsNoConfig))
        return "EGL has no configuration for OpenGL";

    const std::array<EGLint, 7> version{EGL_CONTEXT_MAJOR_VERSION,
                                        3,
                                        EGL_CONTEXT_MINOR_VERSION,
                                        3,
                                        EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                        EGL_NONE};
    mContext = eglCreateContext(display, hasConfig ? config : EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT,
                                version.data());
    if (mContext == EGL_NO_CONTEXT)
        return "the driver does not offer OpenGL 3.3 core";
    if (!needsNoSurface)
    {
        const std::array<EGLint, 5> size{EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        mSurface = eglCreatePbufferSurface(display, config, size.data());
    }
    if (eglMakeCurrent(display, mSurface, mSurface, mContext) != EGL_TRUE)
        return "the context cannot be made current";
    return epoxy_gl_version() >= 33 ? "" : "the driver offers less than OpenGL 3.3";
}

void OffscreenContext::close()
{
    if (mDisplay == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (mContext != EGL_NO_CONTEXT)
        eglDestroyContext(mDisplay, mContext);
    if (mSurface != EGL_NO_SURFACE)
        eglDestroySurface(mDisplay, mSurface);
    eglTerminate(mDisplay);
    mDisplay = EGL_NO_DISPLAY;
    mSurface = EGL_NO_SURFACE;
    mContext = EGL_NO_CONTEXT;
}

}
