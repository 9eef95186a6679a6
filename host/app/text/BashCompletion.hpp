#pragma once

#include "CommandText.hpp"

#include <tavrin/pipeline/AlgorithmCard.hpp>

namespace tavrin::app
{

/// Returns a bash script that completes commands, options, algorithms, NAME=VALUE, choices and files.
std::string bashCompletion(const ProgramDeclaration& program,
                           const std::vector<pipeline::AlgorithmCard>& algorithms);

}
