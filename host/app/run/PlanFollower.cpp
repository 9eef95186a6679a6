#include "PlanFollower.hpp"

#include "../console/Messages.hpp"
#include "../text/Layout.hpp"

namespace tavrin::app
{

void PlanFollower::infoLine(const std::string& line)
{
    if (!mIteration.empty())
        mConsole.print(std::exchange(mIteration, "") + ":\n");
    mConsole.print(line + '\n');
}

void PlanFollower::debugLine(const std::string& line)
{
    if (mIsVerbose)
        mConsole.lines(oneLine(line) + '\n');
}

void PlanFollower::hinted(const std::string& text)
{
    if (mHints.insert(text).second)
        mConsole.message("hint: " + text);
}

void PlanFollower::iterationStarted(const pipeline::Iteration& iteration)
{
    mIteration = iteration.name();
}

void PlanFollower::failed(const AlgorithmRun& run)
{
    if (mIsVerbose)
        return;
    for (const std::string& line : linesOf(run.debugLog()))
        mConsole.lines(oneLine(line) + '\n');
}

}
