#pragma once

#include "../console/Console.hpp"
#include "../console/ProgressBar.hpp"

#include <tavrin/algorithm/AlgorithmFactory.hpp>
#include <tavrin/plugin/RegistrationService.hpp>

namespace tavrin::app
{

struct Program;

/// The objects and settings that every command works with.
struct Session
{
    const Program& program;
    Console& console;
    const volatile bool& abortFlag;
    const RegistrationService<AlgorithmFactory>& algorithms;
    ProgressMode progressMode = ProgressMode::Auto;
    bool isVerbose = false;
};

}
