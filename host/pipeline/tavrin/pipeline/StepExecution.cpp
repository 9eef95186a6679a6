#include <tavrin/pipeline/StepExecution.hpp>

#include <tavrin/pipeline/OutputFiles.hpp>
#include <tavrin/pipeline/RunFailure.hpp>
#include <tavrin/pipeline/SilentOutput.hpp>
#include <tavrin/pipeline/Words.hpp>

#include <tavrin/io/Writer.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

/// Passes on what happens in an algorithm, and ends its run if it announces a result that a requested
/// file cannot hold.
class StepFollower final : public RunObserver
{
public:
    StepFollower(RunObserver& observer, const std::vector<const OutputRequest*>& requests)
        : mObserver(observer), mRequests(requests)
    {
    }

    void opened(const ProgressReport& report) override { mObserver.opened(report); }
    void closed(const ProgressReport& report) override { mObserver.closed(report); }
    void infoLine(const std::string& line) override { mObserver.infoLine(line); }
    void debugLine(const std::string& line) override { mObserver.debugLine(line); }
    void hinted(const std::string& text) override { mObserver.hinted(text); }

    void announced(const std::string& port, const Domain& domain, std::size_t numTimeSteps) override
    {
        for (const OutputRequest* const request : mRequests)
            if (request->port == port)
                io::requireSuitable(request->file, domain, numTimeSteps);
        mObserver.announced(port, domain, numTimeSteps);
    }

private:
    RunObserver& mObserver;
    const std::vector<const OutputRequest*>& mRequests;
};

/// Shows only the progress of a run that is made in advance, not what it prints.
class ProgressFollower final : public RunObserver
{
public:
    explicit ProgressFollower(RunObserver& observer) : mObserver(observer) {}
    void opened(const ProgressReport& report) override { mObserver.opened(report); }
    void closed(const ProgressReport& report) override { mObserver.closed(report); }

private:
    RunObserver& mObserver;
    SilentOutput mSilence;
};

void executeFollowed(AlgorithmRun& run, RunObserver& observer, const volatile bool& abortFlag)
{
    try
    {
        run.execute(abortFlag, &observer);
    }
    catch (const Options::missing_option_error& error)
    {
        throw usage_error(error.what());
    }
    if (abortFlag)
        throw io::Aborted();
}

std::string lastLineOf(const std::string& log)
{
    const auto lines = linesOf(log);
    return lines.empty() ? "" : lines.back();
}

}

std::vector<const OutputRequest*> requestsFor(std::size_t step, const Plan& plan)
{
    std::vector<const OutputRequest*> requests;
    for (const OutputRequest& request : plan.outputs)
        if (request.step == step)
            requests.push_back(&request);
    return requests;
}

void executeStep(AlgorithmRun& run, const std::vector<const OutputRequest*>& requests,
                 RunObserver& observer, const volatile bool& abortFlag)
{
    StepFollower follower(observer, requests);
    executeFollowed(run, follower, abortFlag);
}

void executeInAdvance(AlgorithmRun& run, RunObserver& observer, const volatile bool& abortFlag)
{
    ProgressFollower follower(observer);
    executeFollowed(run, follower, abortFlag);
}

void requireResults(const AlgorithmRun& run, std::size_t index, const Plan& plan,
                    PlanObserver& observer)
{
    std::vector<std::string> missing;
    for (const OutputRequest* const request : requestsFor(index, plan))
        if (!isPublished(*request, run))
            missing.push_back("\"" + request->port + "\"");
    for (const Step& step : plan.steps)
        for (const OptionAssignment& assignment : step.assignments)
            if (assignment.source && assignment.source->step == index &&
                run.result(assignment.source->port) == nullptr)
                missing.push_back("\"" + assignment.source->port + "\"");
    const AlgorithmDescription description = run.describe();
    const bool isSilent = description.outputs.empty() && run.infoLog().empty() &&
                          run.results().empty() && !run.debugLog().empty();
    if (missing.empty() && !isSilent)
        return;
    observer.failed(run);
    const std::string& log = run.infoLog().empty() ? run.debugLog() : run.infoLog();
    const std::string reason = run.hints().empty() ? lastLineOf(log) : "";
    throw RunFailure(
        "\"" + description.name + "\" " +
        (isSilent ? "reported nothing" : "published nothing on " + joined(missing, ", ")) +
        (reason.empty() ? "" : ": " + reason));
}

void requireInputs(const Step& step, const AlgorithmRun& run)
{
    for (const auto& option : run.describe().options)
        if (option.isRequired &&
            std::ranges::find(step.assignments, option.name, &OptionAssignment::option) ==
                step.assignments.end())
            throw usage_error(Options::missing_option_error(option.name).what());
}

}
