#pragma once

#include <tavrin/base/Exceptions.hpp>

namespace tavrin::app
{

class Console;

enum ExitCode : int
{
    Done = 0,
    RunFailed = 1,
    WrongUsage = 2,
    FileFailed = 3,
    Interrupted = 130
};

/// A run that ended without what it was asked for.
class RunFailure : public runtime_error
{
public:
    using runtime_error::runtime_error;
};

/// Tells the exception that is being handled in one line, where `isVerbose` with the backtrace of a
/// failed run, and returns the exit code for it. Whatever fails after an interrupt is its outcome.
ExitCode reportException(Console& console, bool isVerbose, bool isInterrupted);

}
