#pragma once

#include <tavrin/pipeline/PipelineText.hpp>
#include <tavrin/pipeline/Plan.hpp>

namespace tavrin::pipeline
{

/// Makes the plan of an iteration from the text of a pipeline: variables are replaced by their values,
/// names of data and steps by what they stand for, and steps come after those that they take results
/// of. Throws `usage_error` with the place in the file.
Plan planOf(const PipelineText& text, const Iteration& iteration);

}
