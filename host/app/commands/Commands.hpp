#pragma once

#include "Command.hpp"

#include <memory>

namespace tavrin::app
{

/// Declares all commands as subcommands of the program, in the order in which help shows them.
std::vector<std::unique_ptr<Command>> makeCommands(CLI::App& program);

std::unique_ptr<Command> makeListCommand(CLI::App& program);
std::unique_ptr<Command> makeDescribeCommand(CLI::App& program);
std::unique_ptr<Command> makeInfoCommand(CLI::App& program);
std::unique_ptr<Command> makeRunCommand(CLI::App& program);
std::unique_ptr<Command> makePipelineCommand(CLI::App& program);
std::unique_ptr<Command> makeSchemaCommand(CLI::App& program);
std::unique_ptr<Command> makeExamplesCommand(CLI::App& program);
std::unique_ptr<Command> makeCompletionCommand(CLI::App& program);
std::unique_ptr<Command> makeManCommand(CLI::App& program);
std::unique_ptr<Command> makeHelpCommand(CLI::App& program);

}
