#pragma once

#include <tavrin/base/Export.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin
{

/// Loads plug-ins and finds the resources of the host and of its plug-ins.
class TAVRIN_API PluginRegistrationService
{
public:
    static PluginRegistrationService& getInstance();

    /// Loads a plug-in library, whose algorithms thereby register themselves. It stays loaded for
    /// the life of the process, so that no factory ever points into unmapped code.
    /// Throws `runtime_error` "PATH: reason" where it cannot be loaded.
    void load(const std::filesystem::path& library);

    /// The libraries loaded so far, in order.
    const std::vector<std::filesystem::path>& libraries() const { return mLibraries; }

    /// The folder where plug-ins lie beside the host's libraries: "plugins" below "tavrin" there.
    std::filesystem::path pluginFolder() const;

    /// The folder of a resource package such as "utils/Graphics", ending in a separator. It is
    /// looked for below TAVRIN_RESOURCE_PATH (folders separated by ':'), then below
    /// "share/tavrin/resources" beside the host's libraries. Throws `runtime_error` that names the
    /// places where it is in none.
    std::string getResourcePath(const std::string& package) const;

private:
    PluginRegistrationService() = default;

    std::vector<std::filesystem::path> mLibraries;
};

}
