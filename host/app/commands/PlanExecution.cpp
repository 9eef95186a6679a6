#include "PlanExecution.hpp"

#include "../console/Warnings.hpp"
#include "../run/PlanFollower.hpp"
#include "../run/Threads.hpp"

#include <tavrin/io/OutputFile.hpp>
#include <tavrin/pipeline/PlanPreview.hpp>
#include <tavrin/pipeline/WholeFile.hpp>

namespace tavrin::app
{

void executePlan(const pipeline::PlanRun::MakePlan& makePlan, const pipeline::Loop& loop,
                 const std::optional<std::string>& reportFile, Session& session,
                 const pipeline::PlanRun::Paths& alsoRead)
{
    const bool isReportPrinted = reportFile == "-";
    Warnings warnings(session.console);
    io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
    PlanFollower follower(session.console, warnings, {session.progressMode, session.isVerbose});
    pipeline::PlanRun run(makePlan, loop,
                          {session.algorithms, loader, follower, session.abortFlag});
    std::vector<std::filesystem::path> others;
    if (reportFile)
        others.emplace_back(*reportFile);
    run.check(others, alsoRead);
    if (isReportPrinted || run.printsData())
        io::setStandardOutput(session.console.reserveOutput());
    startThreads();

    run.execute();
    io::PendingFiles files = std::move(run.files());
    if (reportFile)
    {
        const std::string text = pipeline::jsonText(run.report());
        if (isReportPrinted)
            session.console.answer(text);
        else
            files.push_back(pipeline::prepareWholeFile(*reportFile, text, session.abortFlag));
    }
    // From here on nothing can fail except giving files their names.
    session.console.requireOutput();
    for (const auto& file : files)
        file->publish();
}

void previewPlan(const pipeline::PlanRun::MakePlan& makePlan, const pipeline::Loop& loop,
                 Session& session)
{
    Warnings warnings(session.console);
    io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
    PlanFollower follower(session.console, warnings, {session.progressMode, session.isVerbose});
    const pipeline::PlanRun run(makePlan, loop,
                                {session.algorithms, loader, follower, session.abortFlag});
    run.check();
    startThreads();
    session.console.print(pipeline::previewOf(run, loader));
}

}
