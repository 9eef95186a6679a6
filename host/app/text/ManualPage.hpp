#pragma once

#include "../Program.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// The manual page tavrin(1) in roff.
std::string manualPage(const Program& program, const std::vector<AlgorithmDescription>& algorithms);

}
