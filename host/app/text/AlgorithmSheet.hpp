#pragma once

#include "Json.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// An algorithm's declaration and current values, for a person to read.
std::string algorithmSheet(const AlgorithmRun& run);

/// The same as JSON: name, description, options [{name, kind, help, group, afterSeparator,
/// required, visible, default, value, choices, types, connected}], outputs [{name, kind, types}].
Json algorithmJson(const AlgorithmDescription& description);

}
