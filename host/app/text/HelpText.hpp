#pragma once

#include "CommandText.hpp"

namespace tavrin::app
{

/// The text that `tavrin --help` prints.
std::string helpText(const ProgramDeclaration& program);

/// The text that `tavrin COMMAND --help` prints.
std::string helpText(const CommandDeclaration& command);

/// The texts of one option of the command line.
struct OptionText
{
    /// "-o", "--output".
    std::vector<std::string> names;
    /// The placeholder of the value, "PORT=FILE"; empty for a flag.
    std::string value;
    std::string description;
};

std::vector<OptionText> optionTexts(const CLI::App& syntax);

/// A section of the help that concerns several commands.
struct Topic
{
    std::string title;
    std::string text;
};

const std::vector<Topic>& helpTopics();

}
