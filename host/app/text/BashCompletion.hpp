#pragma once

#include "../Program.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// A script for bash that completes commands, options, algorithms, NAME=VALUE, choices and files.
std::string bashCompletion(const Program& program,
                           const std::vector<AlgorithmDescription>& algorithms);

}
