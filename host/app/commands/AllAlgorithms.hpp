#pragma once

#include "Session.hpp"

#include <tavrin/pipeline/AlgorithmCard.hpp>

namespace tavrin::app
{

/// The declarations of all algorithms, sorted by name. An algorithm whose declaration fails is left
/// out with a warning.
std::vector<pipeline::AlgorithmCard> describeAll(const Session& session);

}
