#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/plugin/SharedLibraryFile.hpp>

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace tavrin
{

namespace
{

/// The folder of the library that this code is in.
std::filesystem::path libraryFolder()
{
    Dl_info info{};
    const auto* const here = reinterpret_cast<const void*>(&libraryFolder);
    if (dladdr(here, &info) == 0 || info.dli_fname == nullptr)
        throw runtime_error("the folder of the host's libraries is not known");
    return std::filesystem::absolute(info.dli_fname).lexically_normal().parent_path();
}

std::vector<std::filesystem::path> foldersOfEnvironment()
{
    std::vector<std::filesystem::path> folders;
    if (const char* const variable = std::getenv("TAVRIN_RESOURCE_PATH"))
    {
        std::istringstream list(variable);
        for (std::string folder; std::getline(list, folder, ':');)
            if (!folder.empty())
                folders.emplace_back(folder);
    }
    return folders;
}

/// The resources of an installation whose libraries are in `libraries`.
std::filesystem::path resourcesBeside(const std::filesystem::path& libraries)
{
    return libraries.parent_path() / "share" / "tavrin" / "resources";
}

/// The message of the system's loader without the path at its beginning.
std::string loaderMessage(const std::filesystem::path& library)
{
    const char* const text = dlerror();
    std::string_view message = text != nullptr ? text : "unknown reason";
    const std::string prefix = library.string() + ": ";
    if (message.starts_with(prefix))
        message.remove_prefix(prefix.size());
    return std::string(message);
}

}

PluginRegistrationService& PluginRegistrationService::getInstance()
{
    static PluginRegistrationService service;
    return service;
}

void PluginRegistrationService::load(const std::filesystem::path& library)
{
    // The loader would search for a bare name in the system's library folders.
    const auto file = std::filesystem::absolute(library).lexically_normal();
    const auto complain = [&](const std::string& reason)
    { throw runtime_error(library.string() + ": " + reason); };
    if (const std::string fault = faultOfSharedLibrary(file); !fault.empty())
        complain(fault);
    // The library is never unloaded, because factories point into it.
    if (dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE) == nullptr)
        complain(loaderMessage(file));
    if (std::ranges::find(mLibraries, file) == mLibraries.end())
        mLibraries.push_back(file);
}

std::filesystem::path PluginRegistrationService::pluginFolder() const
{
    return libraryFolder() / "tavrin" / "plugins";
}

std::string PluginRegistrationService::getResourcePath(const std::string& package) const
{
    auto folders = foldersOfEnvironment();
    folders.push_back(resourcesBeside(libraryFolder()));
    for (const auto& library : mLibraries)
    {
        const auto pluginPlace = library.parent_path();
        folders.push_back(pluginPlace / "resources");
        // A plug-in of another installation lies in lib/tavrin/plugins there.
        folders.push_back(resourcesBeside(pluginPlace.parent_path().parent_path()));
    }
    std::string places;
    for (const auto& folder : folders)
    {
        const auto candidate = folder / package;
        std::error_code error;
        if (std::filesystem::is_directory(candidate, error))
            return candidate.string() + '/';
        places += (places.empty() ? "" : ", ") + candidate.string();
    }
    throw runtime_error("resources \"" + package + "\" not found; looked for " + places);
}

}
