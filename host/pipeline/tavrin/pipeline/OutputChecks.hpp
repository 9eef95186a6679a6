#pragma once

#include <tavrin/pipeline/Plan.hpp>

namespace tavrin::pipeline
{

/// Checks before a run that the files can be written after it. Throws `usage_error` for a file that
/// is named twice or is one of the inputs, possibly as a step of a series, and `FileError` if a file
/// cannot be created or replaced. Standard output, "-" and "-.csv", passes.
TAVRIN_API void checkDestinations(const std::vector<std::filesystem::path>& destinations,
                                  const std::vector<std::filesystem::path>& inputs);

/// Checks before a loop that each of its iterations has a file to write: throws `usage_error` for a
/// file that every iteration would replace.
TAVRIN_API void checkNumberPlaces(const std::vector<OutputRequest>& requests, const Loop& loop);

/// Checks before a loop that no two of the files are the same, and that none of them is an input, in
/// time that grows with their number. Throws `usage_error`.
TAVRIN_API void checkDistinct(const std::vector<std::filesystem::path>& destinations,
                              const std::vector<std::filesystem::path>& inputs);

/// Checks before a run that each format can hold at least one of the grids and numbers of time steps
/// of the inputs. Throws `usage_error` that names the formats that can. Without inputs every format
/// passes. In a loop over time steps every number of steps does.
TAVRIN_API void checkFormats(const std::vector<OutputRequest>& requests,
                             const DataObjectBundle::Members& inputs, const Loop& loop);

}
