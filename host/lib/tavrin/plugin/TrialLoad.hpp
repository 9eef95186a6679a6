#pragma once

#include <filesystem>

namespace tavrin
{

/// Loads a library in a process of its own and says how that ended badly; empty where it did not.
/// What a library does while it is loaded cannot be undone or caught: an exception or a crash there
/// would end this process.
std::string faultOfTrialLoad(const std::filesystem::path& library);

}
