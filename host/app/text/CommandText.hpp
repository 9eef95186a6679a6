#pragma once

#include <string>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): named by the library
namespace CLI
{
class App;
}

namespace tavrin::app
{

/// A command line that works as it stands, for the reader to try.
struct Example
{
    std::string command;
    std::string meaning;
};

/// The texts of one command, from which its help, the manual page and the completion are made.
struct CommandText
{
    std::string name;
    /// The words that the command takes besides options: "FILE".
    std::string words;
    /// One line without a full stop.
    std::string summary;
    /// Paragraphs separated by empty lines. Lines that begin with a blank are not wrapped.
    std::string details;
    std::vector<Example> examples;
};

/// A command as it is declared: its texts and its options.
struct CommandDeclaration
{
    const CommandText& text;
    const CLI::App& syntax;
};

/// The program as it is declared: the options of every command, and all commands.
struct ProgramDeclaration
{
    const CLI::App& syntax;
    std::vector<CommandDeclaration> commands;
};

}
