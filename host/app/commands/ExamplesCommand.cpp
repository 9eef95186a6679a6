#include "../ExampleData.hpp"
#include "../Session.hpp"
#include "../text/Layout.hpp"
#include "Commands.hpp"

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
                            .summary = "Writes example data sets made from formulas",
                            .details = "",
                            .examples = {{"tavrin examples .",
                                          "The files that the examples of this help work on."}}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        std::vector<std::vector<std::string>> rows;
        for (const ExampleFile& file : writeExamples(onlyWord(words), session.abortFlag))
            rows.push_back({file.name, file.description});
        session.console.print(alignedColumns(rows, 0, LastColumn::AsItIs));
    }
};

}

std::unique_ptr<Command> makeExamplesCommand(CLI::App& program)
{
    return std::make_unique<ExamplesCommand>(program);
}

}
