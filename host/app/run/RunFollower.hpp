#pragma once

#include "../console/ProgressBar.hpp"
#include <tavrin/pipeline/OutputRequest.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::app
{

/// Shows the logs and the progress of an algorithm on the console as they come. Ends the run with a
/// `usage_error` if the algorithm announces a result that a requested file cannot hold.
class RunFollower final : public RunObserver
{
public:
    struct Settings
    {
        ProgressMode progressMode;
        /// Whether the debug log is shown.
        bool isVerbose;
    };

    RunFollower(Console& console, const Settings& settings,
                const std::vector<pipeline::OutputRequest>& requests);

    void opened(const ProgressReport& report) override { mProgressBar.opened(report); }
    void closed(const ProgressReport& report) override { mProgressBar.closed(report); }

    void infoLine(const std::string& line) override;
    void debugLine(const std::string& line) override;
    void hinted(const std::string& text) override;
    void announced(const std::string& port, const Domain& domain,
                   std::size_t numTimeSteps) override;

private:
    Console& mConsole;
    ProgressBar mProgressBar;
    bool mIsVerbose;
    const std::vector<pipeline::OutputRequest>& mRequests;
};

/// Prints the lines of a debug log on standard error.
void printDebugLog(Console& console, const std::string& log);

}
