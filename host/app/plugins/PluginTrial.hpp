#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tavrin::app
{

/// Loads a library in a process of its own and returns why it must not be loaded in this one; empty
/// if the trial went well. Code that a library runs while it is loaded may crash, hang or end the
/// process, which cannot be undone or caught. The process is another instance of the program: see
/// `runTrialIfAsked`. Throws `io::Aborted` soon after the abort flag was set.
std::string faultInTrial(const std::filesystem::path& library, const volatile bool& abortFlag);

/// If this process was started by `faultInTrial`, loads the library, reports the outcome through a
/// pipe and ends the process. Otherwise returns.
void runTrialIfAsked(int argc, const char* const* argv);

}
