#pragma once

#include "Session.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// The declarations of all algorithms, sorted by name. An algorithm whose declaration fails is left
/// out with a warning.
std::vector<AlgorithmDescription> describeAll(const Session& session);

}
