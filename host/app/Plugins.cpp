#include "Plugins.hpp"

#include "console/Console.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace tavrin::app
{

namespace
{

namespace fs = std::filesystem;

std::vector<fs::path> pathsOfEnvironment()
{
    std::vector<fs::path> paths;
    const char* const variable = std::getenv("TAVRIN_PLUGIN_PATH");
    std::istringstream list(variable != nullptr ? variable : "");
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty())
            paths.emplace_back(path);
    return paths;
}

/// The libraries in a folder, by name; any other path is a library itself.
std::vector<fs::path> librariesOf(const fs::path& path)
{
    std::error_code error;
    if (!fs::is_directory(path, error))
        return {path};
    std::vector<fs::path> libraries;
    for (fs::directory_iterator entry(path, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".so")
            libraries.push_back(entry->path());
    if (libraries.empty())
        throw runtime_error(path.string() + ": " +
                            (error ? error.message() : "the folder holds no .so file"));
    std::ranges::sort(libraries);
    return libraries;
}

}

void loadPlugins(const std::vector<std::string>& paths, Console& console)
{
    auto& service = PluginRegistrationService::getInstance();
    const auto warned = [&](const auto& action)
    {
        try
        {
            action();
        }
        catch (const std::exception& error)
        {
            console.line(std::string("warning: plug-in ") + error.what());
        }
    };
    std::vector<fs::path> places{service.pluginFolder() / "libflaimiob.so"};
    std::ranges::copy(pathsOfEnvironment(), std::back_inserter(places));
    std::ranges::copy(paths, std::back_inserter(places));
    for (const fs::path& place : places)
        warned(
            [&]
            {
                for (const fs::path& library : librariesOf(place))
                    warned([&] { service.load(library); });
            });
}

}
