#pragma once

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

/// Prints the exception that is being handled on one line, followed by its backtrace if `isVerbose`,
/// and returns its exit code. After an interrupt every exception counts as the interruption.
ExitCode reportException(Console& console, bool isVerbose, bool isInterrupted);

}
