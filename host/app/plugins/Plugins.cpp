#include "Plugins.hpp"

#include "../console/Console.hpp"
#include "PluginTrial.hpp"

#include <tavrin/io/FileError.hpp>
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

/// The libraries in a folder, sorted by name; any other path stands for itself.
std::vector<fs::path> librariesAt(const fs::path& path)
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

/// Loads plug-ins and turns their errors into warnings.
class PluginLoader
{
public:
    PluginLoader(Console& console, const volatile bool& abortFlag)
        : mConsole(console), mAbortFlag(abortFlag)
    {
    }

    void loadTrusted(const fs::path& folder)
    {
        load(folder, [&](const fs::path& library) { mService.load(library); });
    }

    void loadAfterTrial(const fs::path& path)
    {
        load(path,
             [&](const fs::path& library)
             {
                 if (const std::string fault = faultInTrial(library, mAbortFlag); !fault.empty())
                     throw runtime_error(library.string() + ": " + fault);
                 mService.load(library);
             });
    }

private:
    template<typename LoadOne>
    void load(const fs::path& path, const LoadOne& loadOne)
    {
        withWarning(
            [&]
            {
                for (const fs::path& library : librariesAt(path))
                    withWarning([&] { loadOne(library); });
            });
    }

    template<typename Action>
    void withWarning(const Action& action)
    {
        try
        {
            action();
        }
        catch (const io::Aborted&)
        {
            throw;
        }
        catch (const std::exception& error)
        {
            mConsole.message(std::string("warning: plug-in ") + error.what());
        }
    }

    PluginRegistrationService& mService = PluginRegistrationService::getInstance();
    Console& mConsole;
    const volatile bool& mAbortFlag;
};

}

void loadPlugins(const std::vector<std::string>& paths, Console& console,
                 const volatile bool& abortFlag)
{
    PluginLoader loader(console, abortFlag);
    loader.loadTrusted(PluginRegistrationService::getInstance().pluginFolder());
    for (const fs::path& path : pathsOfEnvironment())
        loader.loadAfterTrial(path);
    for (const std::string& path : paths)
        loader.loadAfterTrial(path);
}

}
