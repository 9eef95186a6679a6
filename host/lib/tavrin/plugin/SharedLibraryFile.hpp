#pragma once

#include <filesystem>

namespace tavrin
{

/// Why a file is no complete shared library of this machine; empty where it is one. The system's
/// loader trusts the file and is killed by one that was cut off.
std::string faultOfSharedLibrary(const std::filesystem::path& file);

}
