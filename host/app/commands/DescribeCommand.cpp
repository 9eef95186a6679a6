#include "../Session.hpp"
#include "../run/RunInputs.hpp"
#include "../text/AlgorithmSheet.hpp"
#include "Commands.hpp"

#include <CLI/CLI.hpp>

namespace tavrin::app
{

namespace
{

class DescribeCommand final : public Command
{
public:
    explicit DescribeCommand(CLI::App& program)
        : Command(
              program,
              {.name = "describe",
               .words = "ALGORITHM [NAME=VALUE]...",
               .summary = "Describes an algorithm: its options, their values, and its outputs",
               .details =
                   "With values, the description is that of the algorithm after they are set: "
                   "files are loaded, and options that have no use with the values are marked "
                   "as hidden.\n\n"
                   "The JSON is one object with name, description, options [{name, kind, "
                   "help, group, afterSeparator, required, visible, default, value, choices, "
                   "types, connected}] and outputs [{name, kind, types}]. Values are texts, "
                   "as they are written in NAME=VALUE.",
               .examples = {{"tavrin describe \"Field/Tensor Field Operator\"",
                             "All options of an algorithm and an example call."},
                            {"tavrin describe \"Field/Tensor Field Operator\" "
                             "\"Operator=Norm of Field A\" --json",
                             "For another program: the options as they are for this operator."}}})
    {
        declaration().add_flag("--json", mWantsJson, "prints JSON");
    }

    void execute(const Words& words, Session& session) override
    {
        AlgorithmRun run(session.algorithms, firstWord(words));
        const auto assignments = parseAssignments({words.begin() + 1, words.end()}, run);
        io::Loader loader([&](const std::string& line)
                          { session.console.line("warning: " + line); },
                          session.abortFlag);
        RunInputs(run, loader).apply(assignments);
        session.console.print(mWantsJson ? jsonText(algorithmJson(run.describe()))
                                         : algorithmSheet(run));
    }

private:
    bool mWantsJson = false;
};

}

std::unique_ptr<Command> makeDescribeCommand(CLI::App& program)
{
    return std::make_unique<DescribeCommand>(program);
}

}
