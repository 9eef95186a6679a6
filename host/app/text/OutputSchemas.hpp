#pragma once

#include <tavrin/pipeline/Json.hpp>

#include <string>
#include <vector>

namespace tavrin::app
{

/// What the program prints as JSON, by name: "describe", "info", "list", "report".
std::vector<std::string> outputSchemaNames();

/// The JSON Schema of what `--json` prints for a command, or of the file that `--report` writes. Throws
/// `usage_error` for an unknown name.
pipeline::Json outputSchema(const std::string& name);

}
