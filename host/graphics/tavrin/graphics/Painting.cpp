#include <tavrin/graphics/Picture.hpp>

#include "../../painter/PainterModule.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <dlfcn.h>

#include <filesystem>
#include <mutex>

namespace tavrin::graphics
{

namespace
{

namespace fs = std::filesystem;

const PainterModule* loadModule()
{
    Dl_info info{};
    const auto* const here = reinterpret_cast<const void*>(&loadModule);
    if (dladdr(here, &info) == 0 || info.dli_fname == nullptr)
        throw runtime_error("the folder of the host's libraries is not known");
    const fs::path file = fs::absolute(info.dli_fname).parent_path() / "libtavrin-painter.so";
    // It is never unloaded: drivers leave threads and exit handlers behind.
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const function = library != nullptr ? dlsym(library, painterModuleFunction) : nullptr;
    if (function == nullptr)
    {
        const char* const cause = dlerror();
        throw runtime_error(std::string("pictures cannot be painted: ") +
                            (cause != nullptr ? cause : "unknown reason"));
    }
    return reinterpret_cast<PainterModuleFunction>(function)();
}

const PainterModule& painterModule()
{
    static const PainterModule* const module = loadModule();
    return *module;
}

}

Image paint(const Scene& scene, const PictureOptions& options, const volatile bool& abortFlag)
{
    checkPictureSize(options.width, options.height);
    // One at a time: the connection to the graphics system is one for the process.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    return painterModule().paint(scene, options, abortFlag);
}

std::vector<std::uint8_t> encodePng(const Image& image)
{
    return painterModule().encodePng(image);
}

}
