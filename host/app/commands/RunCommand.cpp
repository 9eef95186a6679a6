#include "../console/Failure.hpp"
#include "../console/Warnings.hpp"
#include "../run/OutputWriter.hpp"
#include "../run/Picture.hpp"
#include "../run/Threads.hpp"
#include "../run/WholeFile.hpp"
#include "../text/AlgorithmSheet.hpp"
#include "../text/Layout.hpp"
#include "Commands.hpp"
#include "Session.hpp"

#include <tavrin/io/Writer.hpp>
#include <tavrin/pipeline/RunInputs.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

namespace
{

/// Adds the time of a piece of work to a sum.
template<typename Work>
void timed(double& seconds, const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The options of a run as the report tells them: data by its references.
Json reportedOptions(const AlgorithmDescription& description,
                     const std::vector<pipeline::OptionAssignment>& assignments)
{
    Json options = Json::object();
    for (const auto& option : description.options)
    {
        if (option.kind == InputKind::Label)
            continue;
        Json& value = options[option.name];
        if (option.kind != InputKind::Data && option.kind != InputKind::Bundle)
            value = option.value;
        for (const pipeline::OptionAssignment& assignment : assignments)
        {
            if (assignment.option != option.name || assignment.value.empty())
                continue;
            if (option.kind == InputKind::Data)
                value = assignment.value;
            else if (option.kind == InputKind::Bundle)
                value.push_back(assignment.value);
        }
    }
    return options;
}

/// Shows progress and refuses results that the requested files cannot hold.
class RunWatcher final : public RunObserver
{
public:
    RunWatcher(Session& session, const std::vector<OutputRequest>& requests)
        : mProgressBar(session.console, session.progressMode), mRequests(requests)
    {
    }

    void opened(const ProgressReport& report) override { mProgressBar.opened(report); }
    void closed(const ProgressReport& report) override { mProgressBar.closed(report); }

    void announced(const std::string& port, const Domain& domain, std::size_t numTimeSteps) override
    {
        for (const OutputRequest& request : mRequests)
            if (request.port == port)
                io::requireSuitable(request.file, domain, numTimeSteps);
    }

private:
    ProgressBar mProgressBar;
    const std::vector<OutputRequest>& mRequests;
};

class RunCommand final : public Command
{
public:
    explicit RunCommand(CLI::App& program)
        : Command(
              program,
              {.name = "run",
               .words = "ALGORITHM [NAME=VALUE]...",
               .summary = "Runs an algorithm and writes what it delivers",
               .details =
                   "NAME=VALUE sets an option, in the order given. Data is given by a reference, "
                   "FILE#ARRAY, and a grid by FILE; an option that takes several fields may be given "
                   "several times. NAME:=VALUE sets a choice to a value that the list does not "
                   "offer. \"tavrin describe ALGORITHM\" shows the options.\n\n"
                   "The extension of an output's file chooses the format and has to suit the grid: "
                   ".vti .vtr .vts .vtu .vtp, and .pvd for several time steps. Graphics is painted "
                   "as a .png picture, or written as line segments to a .vtp file; of arrows, the "
                   "representations \"arrow\" and \"tube arrow\" have all digits there, \"line\" has "
                   "seven. Files appear under "
                   "their names when they are complete: a run that fails or is interrupted leaves "
                   "existing files as they were.\n\n"
                   "The algorithm's report goes to standard output, everything else to standard "
                   "error. The file of --report gets, after a successful run, one JSON object with "
                   "algorithm, options {name: value}, seconds {read, execute, write}, "
                   "peakMemoryBytes, infoLog, debugLog (arrays of lines) and outputs [{port, file, "
                   "values, timeSteps}], with width and height for a picture, and what the "
                   "algorithm counted, such as samples {total, outside}.",
               .examples = {{"tavrin run \"Field/Tensor Field Operator\" "
                             "\"Field A=flow.vtu#velocity\" \"Operator=Norm of Field A\" "
                             "-o Field=speed.vtu",
                             "The speed of a flow at every point, in a new file."},
                            {"tavrin run \"Field/Show Hedgehogs\" Field=flow.vtu#velocity "
                             "\"Color Map=viridis\" \"Representation=tube arrow\" Scale=0.2 "
                             "-o Hedgehogs=flow.png --size 1600x1200",
                             "A picture of its arrows, colored by the speed."}}})
    {
        syntax()
            .add_option("-o,--output", mOutputWords,
                        "writes an output; PORT= may be left out where there is only one")
            ->type_name("PORT=FILE")
            ->allow_extra_args(false);
        syntax()
            .add_option("--report", mReportFile,
                        "writes a report of a successful run as JSON; - is standard output")
            ->type_name("FILE.json");
        syntax()
            .add_option("--size", mPictureWords.size, "size of pictures in pixels, 1280x960")
            ->type_name("WIDTHxHEIGHT");
        syntax()
            .add_option("--background", mPictureWords.background, "their background, #ffffff")
            ->type_name("COLOR");
        syntax()
            .add_option(
                "--view", mPictureWords.view,
                "where the eye is: x, -x, y, -y, z, -z, iso, or AZIMUTH,ELEVATION in degrees")
            ->type_name("VIEW");
    }

    std::string help(const Words& words, const Session& session) const override
    {
        if (words.empty())
            return Command::help(words, session);
        return algorithmSheet(AlgorithmRun(session.algorithms, words.front()));
    }

    void execute(const Words& words, Session& session) override
    {
        startThreads();
        AlgorithmRun run(session.algorithms, firstWord(words));
        const auto assignments = pipeline::parseAssignments({words.begin() + 1, words.end()}, run);
        const auto requests = parseOutputs(mOutputWords, run.describe());
        const auto pictureOptions = mPictureWords.options();
        if (!mPictureWords.isEmpty() && std::ranges::none_of(requests, &OutputRequest::isPicture))
            throw usage_error("--size, --background and --view are for pictures; no output is a "
                              ".png file");
        checkDestinations(destinations(requests), pipeline::inputFiles(assignments, run));
        if (isReportPrinted())
            session.console.reserveOutput();

        RunReport report;
        report.algorithm = words.front();
        Warnings warnings(session.console);
        io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
        pipeline::RunInputs inputs(run, loader);
        timed(report.seconds.read, [&] { inputs.apply(assignments); });
        warnings.print();
        checkFormats(requests, inputs.objects());
        // What only the algorithm knows, such as the number of times, is refused before its work.
        const OutputWriter writer(run, inputs.objects(), pictureOptions, session.abortFlag);
        timed(report.seconds.execute, [&] { executeAndLog(run, writer, requests, session); });
        io::PendingFiles files;
        timed(report.seconds.write,
              [&]
              {
                  for (const OutputRequest& request : requests)
                      report.outputs.push_back(writer.write(request, files));
              });
        if (mReportFile)
        {
            report.options = reportedOptions(run.describe(), assignments);
            report.infoLog = run.infoLog();
            report.debugLog = run.debugLog();
            report.results = run.results();
            const std::string text = jsonText(report.toJson());
            if (isReportPrinted())
                session.console.answer(text);
            else
                files.push_back(prepareWholeFile(*mReportFile, text, session.abortFlag));
        }
        // From here on nothing can fail except giving files their names.
        session.console.requireOutput();
        for (const auto& file : files)
            file->publish();
    }

private:
    std::vector<std::filesystem::path> destinations(
        const std::vector<OutputRequest>& requests) const
    {
        std::vector<std::filesystem::path> files;
        std::ranges::transform(requests, std::back_inserter(files), &OutputRequest::file);
        if (mReportFile && !isReportPrinted())
            files.emplace_back(*mReportFile);
        return files;
    }

    bool isReportPrinted() const { return mReportFile == "-"; }

    /// Executes the algorithm and prints its logs, however it ends. Throws what the algorithm
    /// throws, `Aborted` after an interrupt, and `RunFailure` where a requested output is missing.
    static void executeAndLog(AlgorithmRun& run, const OutputWriter& writer,
                              const std::vector<OutputRequest>& requests, Session& session)
    {
        try
        {
            {
                RunWatcher watcher(session, requests);
                run.execute(session.abortFlag, &watcher);
            }
            if (session.abortFlag)
                throw io::Aborted();
        }
        catch (const Options::missing_option_error& error)
        {
            printLogs(run, session, session.isVerbose);
            throw usage_error(error.what());
        }
        catch (...)
        {
            if (!session.abortFlag)
                printLogs(run, session, session.isVerbose);
            throw;
        }
        const auto missing = missingPorts(writer, requests);
        // Without outputs, what the algorithm has to say is all there is of it.
        const bool saidNothing =
            run.describe().outputs.empty() && run.infoLog().empty() && !run.debugLog().empty();
        printLogs(run, session, session.isVerbose || saidNothing || !missing.empty());
        if (saidNothing)
            throw RunFailure("\"" + run.describe().name + "\" reported nothing");
        if (!missing.empty())
            throw RunFailure("\"" + run.describe().name + "\" published nothing on " +
                             joined(missing, ", "));
    }

    static std::vector<std::string> missingPorts(const OutputWriter& writer,
                                                 const std::vector<OutputRequest>& requests)
    {
        std::vector<std::string> ports;
        for (const OutputRequest& request : requests)
            if (!writer.isPublished(request))
                ports.push_back("\"" + request.port + "\"");
        return ports;
    }

    /// The debug log goes to standard error as a whole, or only the hints in it.
    static void printLogs(const AlgorithmRun& run, Session& session, bool wantsWholeDebugLog)
    {
        std::string info = run.infoLog();
        if (!info.empty() && !info.ends_with('\n'))
            info += '\n';
        session.console.print(info);
        for (const std::string& line : linesOf(run.debugLog()))
            if (wantsWholeDebugLog || line.starts_with("hint: "))
                session.console.message(line);
        for (const std::string& text : run.hints())
            session.console.message("hint: " + text);
    }

    std::vector<std::string> mOutputWords;
    std::optional<std::string> mReportFile;
    PictureWords mPictureWords;
};

}

std::unique_ptr<Command> makeRunCommand(CLI::App& program)
{
    return std::make_unique<RunCommand>(program);
}

}
