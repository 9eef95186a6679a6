#include "../text/HelpText.hpp"
#include "Commands.hpp"
#include "Program.hpp"
#include "Session.hpp"

namespace tavrin::app
{

namespace
{

class HelpCommand final : public Command
{
public:
    explicit HelpCommand(CLI::App& program)
        : Command(program, {.name = "help",
                            .words = "[COMMAND]",
                            .summary = "Prints help, as --help does",
                            .details = "",
                            .examples = {}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        if (words.empty())
            return session.console.print(helpText(session.program.declaration()));
        const Command& command = session.program.command(words.front());
        session.console.print(command.help({words.begin() + 1, words.end()}, session));
    }
};

}

std::unique_ptr<Command> makeHelpCommand(CLI::App& program)
{
    return std::make_unique<HelpCommand>(program);
}

}
