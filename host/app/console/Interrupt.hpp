#pragma once

namespace tavrin::app
{

/// Ctrl-C and the like: the first SIGINT or SIGTERM sets a flag that all work looks at, a second
/// one kills the process.
class Interrupt
{
public:
    static void catchSignals();

    static const volatile bool& flag() { return sFlag; }

private:
    static void handle(int);

    static volatile bool sFlag;
};

}
