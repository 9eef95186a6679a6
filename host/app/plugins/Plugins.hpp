#pragma once

#include <string>
#include <vector>

namespace tavrin::app
{

class Console;

/// Loads all plug-ins in the folder beside the host's libraries, then those named by the environment
/// variable TAVRIN_PLUGIN_PATH, then those given. A path names a library or a folder of libraries.
/// Only the plug-ins in the folder are trusted: every other one is tried in a process of its own
/// first. A plug-in that cannot be loaded is left out with a warning. Throws `io::Aborted` soon
/// after the abort flag was set.
void loadPlugins(const std::vector<std::string>& paths, Console& console,
                 const volatile bool& abortFlag);

}
