#include "../examples/ExampleData.hpp"
#include "../run/Threads.hpp"
#include "../text/Layout.hpp"
#include "Commands.hpp"
#include "Session.hpp"

#include <CLI/CLI.hpp>

namespace tavrin::app
{

namespace
{

class ExamplesCommand final : public Command
{
public:
    explicit ExamplesCommand(CLI::App& program)
        : Command(program, {.name = "examples",
                            .words = "FOLDER",
                            .summary = "Writes example data sets made from formulas, and pipelines",
                            .details = "The folder is created if it does not exist. An existing "
                                       "file is never replaced unless --force is given.",
                            .examples = {{"tavrin examples .",
                                          "The files that the examples of this help work on."}}})
    {
        syntax().add_flag("--force", mReplacesFiles, "replaces existing files");
    }

    void execute(const Words& words, Session& session) override
    {
        startThreads();
        std::vector<std::vector<std::string>> rows;
        const auto existing = mReplacesFiles ? ExistingFiles::Replace : ExistingFiles::Refuse;
        for (const ExampleFile& file : writeExamples(onlyWord(words), existing, session.abortFlag))
            rows.push_back({file.name, file.description});
        session.console.print(alignedColumns(rows, 0, LastColumn::Unwrapped));
    }

private:
    bool mReplacesFiles = false;
};

}

std::unique_ptr<Command> makeExamplesCommand(CLI::App& program)
{
    return std::make_unique<ExamplesCommand>(program);
}

}
