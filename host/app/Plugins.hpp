#pragma once

#include <string>
#include <vector>

namespace tavrin::app
{

class Console;

/// Loads the plug-ins beside the host's libraries, then those that TAVRIN_PLUGIN_PATH names, then
/// those given: libraries, or folders of libraries. What cannot be loaded is a warning.
void loadPlugins(const std::vector<std::string>& paths, Console& console);

}
