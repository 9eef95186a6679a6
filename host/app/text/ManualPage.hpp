#pragma once

#include "CommandText.hpp"

#include <tavrin/pipeline/AlgorithmCard.hpp>

namespace tavrin::app
{

/// The manual page tavrin(1) as roff source.
std::string manualPage(const ProgramDeclaration& program,
                       const std::vector<pipeline::AlgorithmCard>& algorithms);

}
