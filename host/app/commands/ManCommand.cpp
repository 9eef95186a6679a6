#include "../text/ManualPage.hpp"
#include "AllAlgorithms.hpp"
#include "Commands.hpp"
#include "Program.hpp"

namespace tavrin::app
{

namespace
{

class ManCommand final : public Command
{
public:
    explicit ManCommand(CLI::App& program)
        : Command(program,
                  {.name = "man",
                   .words = "",
                   .summary = "Prints the manual page in roff",
                   .details = "",
                   .examples = {{"tavrin man >tavrin.1",
                                 "The page as a file, to be read with \"man ./tavrin.1\"."}}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        refuseWords(words);
        session.console.print(manualPage(session.program.declaration(), describeAll(session)));
    }
};

}

std::unique_ptr<Command> makeManCommand(CLI::App& program)
{
    return std::make_unique<ManCommand>(program);
}

}
