#include "../text/CompletionScripts.hpp"
#include "Commands.hpp"
#include "Session.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>

namespace tavrin::app
{

namespace
{

class CompletionCommand final : public Command
{
public:
    explicit CompletionCommand(CLI::App& program)
        : Command(
              program,
              {.name = "completion",
               .words = "bash|zsh|fish",
               .summary = "Prints a script that makes a shell complete command lines",
               .details =
                   "The TAB key then completes commands, algorithms, options, their values, "
                   "outputs, files, the arrays in files and the keys of references. What is "
                   "abbreviated on the line is understood. An installed program needs no script "
                   "where the shell finds those of its prefix. Otherwise, for every new shell,\n"
                   "  bash: put source <(tavrin completion bash) into ~/.bashrc\n"
                   "  zsh:  put source <(tavrin completion zsh) into ~/.zshrc, after compinit\n"
                   "  fish: put tavrin completion fish | source into ~/.config/fish/config.fish",
               .examples = {{"tavrin completion bash >tavrin.bash",
                             "A script for the \"source\" command of the shell."}}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        const std::string& shell = onlyWord(words);
        const auto& scripts = completionScripts();
        const auto script = std::ranges::find(scripts, shell, &CompletionScript::shell);
        if (script == scripts.end())
            throw usage_error("there is no completion for \"" + shell +
                              "\"; there is bash, zsh and fish");
        session.console.print(script->text);
    }
};

}

std::unique_ptr<Command> makeCompletionCommand(CLI::App& program)
{
    return std::make_unique<CompletionCommand>(program);
}

}
