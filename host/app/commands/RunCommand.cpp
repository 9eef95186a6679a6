#include "../console/Failure.hpp"
#include "../console/Warnings.hpp"
#include "../run/RunFollower.hpp"
#include "../run/Threads.hpp"
#include "../text/AlgorithmSheet.hpp"
#include "../text/Layout.hpp"
#include "Commands.hpp"
#include "Session.hpp"
#include <tavrin/pipeline/OutputWriter.hpp>
#include <tavrin/pipeline/Picture.hpp>
#include <tavrin/pipeline/WholeFile.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/pipeline/RunFailure.hpp>
#include <tavrin/pipeline/RunInputs.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

using namespace pipeline;

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

class RunCommand final : public Command
{
public:
    explicit RunCommand(CLI::App& program)
        : Command(
              program,
              {.name = "run",
               .words = "ALGORITHM [NAME=VALUE]...",
               .summary = "Runs an algorithm and writes its results",
               .details =
                   "NAME=VALUE sets an option. A function is given as FILE#ARRAY and a grid as "
                   "FILE; an option that takes several objects may be given several times, and "
                   "NAME= drops those before it. Data is connected first, then the other values are "
                   "set in the order given. NAME:=VALUE sets a choice to a value that the list does "
                   "not offer. \"tavrin describe ALGORITHM\" shows the options.\n\n"
                   "The extension of an output file selects the format and must suit the grid: " +
                   io::enumerate(io::writableExtensions(), "or") +
                   "; several time steps need .pvd. Graphics is painted "
                   "as a .png picture, or written as line segments to a .vtp file: in double "
                   "precision for the arrow representations \"arrow\" and \"tube arrow\", in single "
                   "precision for \"line\". Files appear under their names when all of them are "
                   "complete: a run that fails or is interrupted leaves existing files unchanged.\n\n"
                   "The algorithm's report goes to standard output, everything else to standard "
                   "error. After a successful run, --report writes one JSON object with formatVersion, "
                   "algorithm, options {name: value}, seconds {read, execute, write}, "
                   "peakMemoryBytes, infoLog, debugLog, hints (arrays of lines), suggestions "
                   "{option: value}, results (what the algorithm reports), samples {total, outside} "
                   "if a field was sampled, and outputs [{port, file, values, timeSteps}], with "
                   "width and height for a picture. With --report -, standard output holds the "
                   "report alone and everything else goes to standard error.",
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
            .add_option("--background", mPictureWords.background, "background of pictures, #ffffff")
            ->type_name("COLOR");
        syntax()
            .add_option(
                "--view", mPictureWords.view,
                "direction to the viewer: x, -x, y, -y, z, -z, iso, or AZIMUTH,ELEVATION in degrees")
            ->type_name("VIEW");
    }

    std::string help(const Words& words, const Session& session) const override
    {
        if (words.empty())
            return Command::help(words, session);
        return algorithmSheet(
            pipeline::AlgorithmCard(AlgorithmRun(session.algorithms, words.front())));
    }

    void execute(const Words& words, Session& session) override
    {
        AlgorithmRun run(session.algorithms, firstWord(words));
        const auto assignments = pipeline::parseAssignments({words.begin() + 1, words.end()}, run);
        const auto requests = parseOutputs(mOutputWords, run.describe());
        const auto pictureOptions = mPictureWords.options();
        if (!mPictureWords.isEmpty() && std::ranges::none_of(requests, &OutputRequest::isPicture))
            throw usage_error("--size, --background and --view are for pictures; no output is a "
                              ".png file");
        Warnings warnings(session.console);
        io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
        checkDestinations(destinations(requests), pipeline::inputFiles(assignments, loader));
        if (isReportPrinted())
            session.console.reserveOutput();
        startThreads();

        RunReport report;
        RunInputs inputs(run, loader);
        timed(report.seconds.read, [&] { inputs.apply(assignments); });
        warnings.print();
        checkFormats(requests, inputs.objects());
        timed(report.seconds.execute, [&] { executeRun(run, requests, session); });
        requireResults(run, requests, session);

        ProgressBar progress(session.console, session.progressMode);
        const OutputWriter writer(run, inputs.objects(), pictureOptions, progress,
                                  session.abortFlag);
        io::PendingFiles files;
        timed(report.seconds.write,
              [&]
              {
                  for (const OutputRequest& request : requests)
                      report.outputs.push_back(writer.write(request, files));
              });
        if (mReportFile)
            addReport(jsonText(report.toJson(run, assignments)), files, session);
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

    void addReport(const std::string& text, io::PendingFiles& files, Session& session) const
    {
        if (isReportPrinted())
            session.console.answer(text);
        else
            files.push_back(prepareWholeFile(*mReportFile, text, session.abortFlag));
    }

    /// Executes the algorithm. Exceptions pass through; throws `Aborted` after an interrupt.
    static void executeRun(AlgorithmRun& run, const std::vector<OutputRequest>& requests,
                           Session& session)
    {
        RunFollower follower(session.console, {session.progressMode, session.isVerbose}, requests);
        try
        {
            run.execute(session.abortFlag, &follower);
        }
        catch (const Options::missing_option_error& error)
        {
            throw usage_error(error.what());
        }
        if (session.abortFlag)
            throw io::Aborted();
    }

    /// Throws `RunFailure` if a requested output was not published, or if an algorithm without outputs
    /// had nothing to report. The debug log, which is then shown, may tell the reason. If the algorithm
    /// gave no hint, the last line of its logs becomes part of the message.
    static void requireResults(const AlgorithmRun& run, const std::vector<OutputRequest>& requests,
                               Session& session)
    {
        std::vector<std::string> missing;
        for (const OutputRequest& request : requests)
            if (!isPublished(request, run))
                missing.push_back("\"" + request.port + "\"");
        const AlgorithmDescription description = run.describe();
        const bool isSilent = description.outputs.empty() && run.infoLog().empty() &&
                              run.results().empty() && !run.debugLog().empty();
        if (missing.empty() && !isSilent)
            return;
        if (!session.isVerbose)
            printDebugLog(session.console, run.debugLog());
        const std::string& log = run.infoLog().empty() ? run.debugLog() : run.infoLog();
        const std::string reason = run.hints().empty() ? lastLineOf(log) : "";
        throw RunFailure(
            "\"" + description.name + "\" " +
            (isSilent ? "reported nothing" : "published nothing on " + joined(missing, ", ")) +
            (reason.empty() ? "" : ": " + reason));
    }

    static std::string lastLineOf(const std::string& log)
    {
        const auto lines = linesOf(log);
        return lines.empty() ? "" : lines.back();
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
