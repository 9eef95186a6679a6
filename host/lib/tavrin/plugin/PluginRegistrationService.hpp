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

    /// Loads a plug-in library, whose algorithms register themselves in the course of it. The library
    /// stays loaded as long as the process lives, so that no factory ever points into unmapped code.
    /// Throws `runtime_error` "PATH: reason" where it cannot be loaded. Code that the library runs
    /// while it is loaded cannot be contained: a crash there ends the process.
    void load(const std::filesystem::path& library);

    /// The libraries loaded so far, in order.
    const std::vector<std::filesystem::path>& libraries() const { return mLibraries; }

    /// The folder of the plug-ins that are installed with the host: "tavrin/plugins" below the folder
    /// of the host's libraries.
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
