#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tavrin::app
{

/// Objects keep the order in which their keys are added.
using Json = nlohmann::ordered_json;

/// Indented, with a line end. Numbers that are not finite are null, and bytes that are not UTF-8
/// are replaced, so that the text is always valid.
std::string jsonText(const Json& json);

}
