#pragma once

#include <filesystem>
#include <string>

namespace tavrin
{

/// Why a file cannot be loaded as a plug-in, found without running any of its code: it is no
/// complete shared library of this machine, or it was built for another interface version of the
/// host. Empty where nothing is wrong. The system's loader trusts the file instead and is killed by a
/// truncated one.
std::string faultOfSharedLibrary(const std::filesystem::path& file);

}
