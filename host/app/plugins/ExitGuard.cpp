#include "ExitGuard.hpp"

#include "../console/Failure.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tavrin::app
{

namespace
{

bool isGuarding = false;

/// Runs inside `exit()`, possibly on a thread of the plug-in while other threads still work. It
/// therefore ends the process at once, without calling the destructors of static objects.
void reportExit()
{
    if (!isGuarding)
        return;
    std::fflush(nullptr);
    constexpr std::string_view message = "error: a plug-in ended the program\n";
    static_cast<void>(!write(STDERR_FILENO, message.data(), message.size()));
    _exit(RunFailed);
}

}

ExitGuard::ExitGuard()
{
    static const bool isRegistered = std::atexit(reportExit) == 0;
    isGuarding = isRegistered;
}

ExitGuard::~ExitGuard()
{
    isGuarding = false;
}

}
