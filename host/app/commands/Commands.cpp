#include "Commands.hpp"

namespace tavrin::app
{

std::vector<std::unique_ptr<Command>> makeCommands(CLI::App& program)
{
    std::vector<std::unique_ptr<Command>> commands;
    for (const auto make : {makeListCommand, makeDescribeCommand, makeInfoCommand, makeRunCommand,
                            makePipelineCommand, makeSchemaCommand, makeExamplesCommand,
                            makeCompletionCommand, makeManCommand, makeHelpCommand})
        commands.push_back(make(program));
    return commands;
}

}
