#pragma once

#include "../Session.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// The declarations of all algorithms, by name. One that cannot be made is a warning.
std::vector<AlgorithmDescription> describeAll(const Session& session);

}
