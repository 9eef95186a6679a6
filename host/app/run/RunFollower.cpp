#include "RunFollower.hpp"

#include "../console/Messages.hpp"
#include "../text/Layout.hpp"

#include <tavrin/io/Writer.hpp>

namespace tavrin::app
{

RunFollower::RunFollower(Console& console, const Settings& settings,
                         const std::vector<pipeline::OutputRequest>& requests)
    : mConsole(console), mProgressBar(console, settings.progressMode),
      mIsVerbose(settings.isVerbose), mRequests(requests)
{
}

void RunFollower::infoLine(const std::string& line)
{
    mConsole.print(line + '\n');
}

void RunFollower::debugLine(const std::string& line)
{
    if (mIsVerbose)
        mConsole.lines(oneLine(line) + '\n');
}

void RunFollower::hinted(const std::string& text)
{
    mConsole.message("hint: " + text);
}

void RunFollower::announced(const std::string& port, const Domain& domain, std::size_t numTimeSteps)
{
    for (const pipeline::OutputRequest& request : mRequests)
        if (request.port == port)
            io::requireSuitable(request.file, domain, numTimeSteps);
}

void printDebugLog(Console& console, const std::string& log)
{
    for (const std::string& line : linesOf(log))
        console.lines(oneLine(line) + '\n');
}

}
