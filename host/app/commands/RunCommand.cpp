#include "../run/LoopWords.hpp"
#include "../run/PictureOptions.hpp"
#include "../text/AlgorithmSheet.hpp"
#include "Commands.hpp"
#include "PlanExecution.hpp"

#include <tavrin/io/Formats.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

using namespace pipeline;

namespace
{

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
                   "not offer. NAME=auto takes the value that the algorithm suggests, as in "
                   "Scale=auto. \"tavrin describe ALGORITHM\" shows the options.\n\n"
                   "Algorithms, options, choices and outputs may be abbreviated to any beginnings of "
                   "their words that fit one name only, in any letter case: \"run tensor "
                   "fielda=flow.vtu op=norm\".\n\n"
                   "The extension of an output file selects the format and must suit the grid: " +
                   io::enumerate(io::writableExtensions(), "or") +
                   "; several time steps need .pvd or .csv. FILE#NAME names the array, and -.csv is "
                   "a table on standard output. Graphics is "
                   "painted as a .png, .svg or .pdf picture, or written as line segments to a .vtp "
                   "file: in double precision for the arrow representations \"arrow\" and \"tube "
                   "arrow\", in single precision for \"line\". Files appear under their names when "
                   "all of them are complete: a run that fails or is interrupted leaves existing "
                   "files unchanged.\n\n"
                   "--each-step repeats the run for every time step of the series among the inputs, "
                   "and --sweep for every value of a set such as [0:1#0.1] or 1,2,5 (in "
                   "brackets, values greater than -1). A .pvd or .csv file collects the time steps; other outputs need a place "
                   "for the number of the run, as in frame_%04d.png. Such files appear one by one: "
                   "those of finished runs stay if a later run fails. A color map without a range "
                   "then spans all runs, and a suggested value is the smallest of all runs.\n\n"
                   "The algorithm's report goes to standard output, everything else to standard "
                   "error. After a successful run, --report writes one JSON object with formatVersion, "
                   "algorithm, options {name: value}, seconds {read, execute, write}, "
                   "peakMemoryBytes, infoLog, debugLog, hints (arrays of lines), suggestions "
                   "{option: value}, results (what the algorithm reports), samples {total, outside} "
                   "if a field was sampled, and outputs [{port, file, values, timeSteps}], with "
                   "width and height for a picture. With --each-step or --sweep it is a list of such "
                   "objects, with time or variables {name: value} each. With --report -, standard "
                   "output holds the report alone and everything else goes to standard error.",
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
        mLoopWords.declare(syntax());
        syntax()
            .add_option("--report", mReportFile,
                        "writes a report of a successful run as JSON; - is standard output")
            ->type_name("FILE.json");
        mPictureOptions.declare(syntax());
    }

    std::string help(const Words& words, const Session& session) const override
    {
        if (words.empty())
            return Command::help(words, session);
        return algorithmSheet(AlgorithmCard(
            AlgorithmRun(session.algorithms, algorithmNamed(words.front(), session.algorithms))));
    }

    void execute(const Words& words, Session& session) override
    {
        const std::string algorithm = algorithmNamed(firstWord(words), session.algorithms);
        const AlgorithmRun declaration(session.algorithms, algorithm);
        const Loop loop = mLoopWords.loop(declaration);
        Plan plan{.steps = {{.id = {},
                             .algorithm = algorithm,
                             .assignments =
                                 parseAssignments({words.begin() + 1, words.end()}, declaration)}},
                  .outputs = parseOutputs(mOutputWords, declaration.describe())};
        mPictureOptions.applyTo(plan);
        if (std::ranges::find(plan.steps.front().assignments, loop.variable,
                              &OptionAssignment::option) != plan.steps.front().assignments.end())
            throw usage_error("option \"" + loop.variable + "\" is given twice");
        executePlan([&](const Iteration& iteration)
                    { return withValue(plan, iteration, declaration); },
                    loop, mReportFile, session);
    }

private:
    /// The plan with the value of a sweep.
    static Plan withValue(Plan plan, const Iteration& iteration, const AlgorithmRun& declaration)
    {
        if (!iteration.variable.empty())
            plan.steps.front().assignments.push_back(
                OptionAssignment::make(iteration.variable, iteration.value, false, declaration));
        return plan;
    }

    LoopWords mLoopWords;
    std::vector<std::string> mOutputWords;
    std::optional<std::string> mReportFile;
    PictureOptions mPictureOptions;
};

}

std::unique_ptr<Command> makeRunCommand(CLI::App& program)
{
    return std::make_unique<RunCommand>(program);
}

}
