#include "../text/BashCompletion.hpp"
#include "AllAlgorithms.hpp"
#include "Commands.hpp"
#include "Program.hpp"

#include <tavrin/base/Exceptions.hpp>

namespace tavrin::app
{

namespace
{

class CompletionCommand final : public Command
{
public:
    explicit CompletionCommand(CLI::App& program)
        : Command(program,
                  {.name = "completion",
                   .words = "bash",
                   .summary = "Prints a script that completes commands, algorithms and options",
                   .details = "For every new shell, put this line into ~/.bashrc:\n"
                              "  source <(tavrin completion bash)",
                   .examples = {{"tavrin completion bash >tavrin.bash",
                                 "A script for the \"source\" command of the shell."}}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        const std::string shell = onlyWord(words);
        if (shell != "bash")
            throw usage_error("there is no completion for \"" + shell + "\"; there is \"bash\"");
        session.console.print(bashCompletion(session.program.declaration(), describeAll(session)));
    }
};

}

std::unique_ptr<Command> makeCompletionCommand(CLI::App& program)
{
    return std::make_unique<CompletionCommand>(program);
}

}
