#pragma once

namespace tavrin::app
{

/// The reaction to Ctrl-C and similar requests to stop: the first SIGINT, SIGTERM or SIGHUP sets a
/// flag that all long work checks; a second signal kills the process. A SIGHUP that is ignored when the program starts, as
/// under nohup, stays ignored.
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
