#pragma once

namespace tavrin::app
{

/// Turns a call of `exit()` in a plug-in, which would end the program with a status of the
/// plug-in's choice, into an error message and exit code 1. It works from the construction of the
/// first object; destroying the object says that the program ends by returning from main().
class ExitGuard
{
public:
    ExitGuard();
    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;
    ~ExitGuard();
};

}
