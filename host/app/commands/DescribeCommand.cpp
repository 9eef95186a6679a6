#include "../console/Warnings.hpp"
#include "../run/Threads.hpp"
#include "../text/AlgorithmSheet.hpp"
#include "Commands.hpp"
#include "Session.hpp"

#include <tavrin/pipeline/RunInputs.hpp>

#include <CLI/CLI.hpp>

namespace tavrin::app
{

using pipeline::Json;
using pipeline::jsonText;

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
                   "With values, the algorithm is described after they are set: files are loaded, "
                   "and the algorithm may hide or show options, which are marked as hidden.\n\n"
                   "The JSON is one object with formatVersion, name, description, options [{name, kind, "
                   "help, group, afterSeparator, required, visible, default, value, choices, "
                   "types, references [{kind, placeholder}], connected}] and outputs [{name, kind, types}]. Values are texts, "
                   "as they are written in NAME=VALUE.",
               .examples = {{"tavrin describe \"Field/Tensor Field Operator\"",
                             "All options of an algorithm and an example call."},
                            {"tavrin describe \"Field/Tensor Field Operator\" "
                             "\"Operator=Norm of Field A\" --json",
                             "For another program: the options as they are for this operator."}}})
    {
        syntax().add_flag("--json", mWantsJson, "prints JSON");
    }

    void execute(const Words& words, Session& session) override
    {
        const std::string algorithm =
            pipeline::algorithmNamed(firstWord(words), session.algorithms);
        AlgorithmRun run(session.algorithms, algorithm);
        const pipeline::Step step{
            .id = {},
            .algorithm = algorithm,
            .assignments = pipeline::parseAssignments({words.begin() + 1, words.end()}, run)};
        if (!step.assignments.empty())
            startThreads();
        Warnings warnings(session.console);
        io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
        pipeline::ObjectPool pool(loader);
        pipeline::RunInputs(run, pool).apply(step);
        warnings.print();
        const pipeline::AlgorithmCard card(run);
        session.console.print(mWantsJson ? jsonText(algorithmJson(card)) : algorithmSheet(card));
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
