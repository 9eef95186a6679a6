#pragma once

#include "Command.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace tavrin::app
{

/// The program as a whole: all commands, and the options that go with every one of them.
struct Program
{
    CLI::App syntax;
    std::vector<std::unique_ptr<Command>> commands;

    /// The command of that name. Throws `usage_error` with the nearest one.
    Command& command(const std::string& name) const;
};

}
