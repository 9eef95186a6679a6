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
    /// searched for below the folders of TAVRIN_RESOURCE_PATH (separated by ':'), then below
    /// "share/tavrin/resources" of the host's installation, then for every loaded plug-in below
    /// "resources" beside it and below "share/tavrin/resources" of its installation. Throws
    /// `runtime_error` with these places where the package is in none.
    std::string getResourcePath(const std::string& package) const;

private:
    PluginRegistrationService() = default;

    std::vector<std::filesystem::path> mLibraries;
};

}
