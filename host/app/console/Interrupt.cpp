#include "Interrupt.hpp"

#include <csignal>

namespace tavrin::app
{

volatile bool Interrupt::sFlag = false;

void Interrupt::catchSignals()
{
    struct sigaction action
    {};
    action.sa_handler = &Interrupt::handle;
    // Reading and writing go on until the flag is looked at.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void Interrupt::handle(int)
{
    sFlag = true;
    struct sigaction killing
    {};
    killing.sa_handler = SIG_DFL;
    sigaction(SIGINT, &killing, nullptr);
    sigaction(SIGTERM, &killing, nullptr);
}

}
