#pragma once

#include "../console/ProgressBar.hpp"
#include "../console/Warnings.hpp"

#include <tavrin/pipeline/PlanObserver.hpp>

#include <set>

namespace tavrin::app
{

/// Shows the logs and the progress of a plan on the console as they come. A hint that repeats itself in
/// a loop is shown once.
class PlanFollower final : public pipeline::PlanObserver
{
public:
    struct Settings
    {
        ProgressMode progressMode;
        /// Whether the debug log is shown.
        bool isVerbose;
    };

    /// `warnings` are printed before each run.
    PlanFollower(Console& console, Warnings& warnings, const Settings& settings)
        : mConsole(console), mWarnings(warnings), mProgressBar(console, settings.progressMode),
          mIsVerbose(settings.isVerbose)
    {
    }

    void opened(const ProgressReport& report) override { mProgressBar.opened(report); }
    void closed(const ProgressReport& report) override { mProgressBar.closed(report); }

    void infoLine(const std::string& line) override;
    void debugLine(const std::string& line) override;
    void hinted(const std::string& text) override;

    void iterationStarted(const pipeline::Iteration& iteration) override;
    void inputsLoaded() override { mWarnings.print(); }
    void failed(const AlgorithmRun& run) override;

private:
    Console& mConsole;
    Warnings& mWarnings;
    ProgressBar mProgressBar;
    bool mIsVerbose;
    /// The name of the iteration, until something is printed about it.
    std::string mIteration;
    std::set<std::string> mHints;
};

}
