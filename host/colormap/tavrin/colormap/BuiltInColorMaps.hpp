#pragma once

#include <tavrin/colormap/ColorMap.hpp>

namespace tavrin
{

/// The names of the built-in maps: "viridis", "plasma", ...
TAVRIN_API const std::vector<std::string>& builtInColorMapNames();

/// A built-in map over the range 0 to 1. Throws `usage_error` for an unknown name, with the most
/// similar one if there is any.
TAVRIN_API ColorMap builtInColorMap(const std::string& name);

}
