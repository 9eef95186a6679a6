#pragma once

namespace tavrin::app
{

/// Turns a call of `exit()` in a plug-in, which would end the program with the status that the
/// plug-in chooses, into an error message and exit code 1. The guard works while the object lives,
/// which is until the program returns from main().
class ExitGuard
{
public:
    ExitGuard();
    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;
    ~ExitGuard();
};

}
