#pragma once

#include "Command.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace tavrin::app
{

/// All commands, and the options that every command has.
struct Program
{
    CLI::App syntax;
    std::vector<std::unique_ptr<Command>> commands;

    /// The command of that name. Throws `usage_error` that suggests the nearest name.
    Command& command(const std::string& name) const;

    ProgramDeclaration declaration() const;
};

}
