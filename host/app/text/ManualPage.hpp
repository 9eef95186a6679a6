#pragma once

#include "CommandText.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// The manual page tavrin(1) in roff.
std::string manualPage(const ProgramDeclaration& program,
                       const std::vector<AlgorithmDescription>& algorithms);

}
