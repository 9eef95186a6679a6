#include "Interrupt.hpp"

#include <csignal>

namespace tavrin::app
{

namespace
{

constexpr int interruptingSignals[] = {SIGINT, SIGTERM, SIGHUP};

bool isIgnoredHangup(int signal)
{
    struct sigaction current
    {};
    return signal == SIGHUP && sigaction(signal, nullptr, &current) == 0 &&
           current.sa_handler == SIG_IGN;
}

}

volatile bool Interrupt::sFlag = false;

void Interrupt::catchSignals()
{
    struct sigaction action
    {};
    action.sa_handler = &Interrupt::handle;
    // Reading and writing are resumed: the flag is checked between system calls.
    action.sa_flags = SA_RESTART;
    for (const int signal : interruptingSignals)
        if (!isIgnoredHangup(signal))
            sigaction(signal, &action, nullptr);
}

void Interrupt::handle(int)
{
    sFlag = true;
    struct sigaction killing
    {};
    killing.sa_handler = SIG_DFL;
    for (const int signal : interruptingSignals)
        if (!isIgnoredHangup(signal))
            sigaction(signal, &killing, nullptr);
}

}
