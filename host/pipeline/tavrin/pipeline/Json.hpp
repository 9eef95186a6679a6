#pragma once

#include <tavrin/base/Export.hpp>

#include <nlohmann/json.hpp>

#include <string>

namespace tavrin::pipeline
{

/// A JSON value whose objects keep the order in which their keys were added.
using Json = nlohmann::ordered_json;

/// Prints a value as indented text with a line end. The text is always valid JSON: numbers that are
/// not finite become null, and bytes that are not UTF-8 are replaced.
TAVRIN_API std::string jsonText(const Json& json);

}
