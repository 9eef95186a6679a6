#pragma once

#include <tavrin/pipeline/PlanRun.hpp>

namespace tavrin::pipeline
{

/// Describes on a few lines what a run would do: its steps with their options, the files it would write,
/// how often, and an estimate of the memory that one repetition takes. Reads grids, but no values.
TAVRIN_API std::string previewOf(const PlanRun& run, io::Loader& loader);

}
