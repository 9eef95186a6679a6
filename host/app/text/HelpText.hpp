#pragma once

#include "../Program.hpp"

namespace tavrin::app
{

/// What `tavrin --help` prints.
std::string helpText(const Program& program);

/// What `tavrin COMMAND --help` prints.
std::string helpText(const Command& command);

/// An option of the command line as texts.
struct OptionText
{
    /// "-o", "--output".
    std::vector<std::string> names;
    /// What the option takes, "PORT=FILE"; empty for a flag.
    std::string value;
    std::string description;
};

std::vector<OptionText> optionTexts(const CLI::App& syntax);

/// Topics that concern several commands.
struct Topic
{
    std::string title;
    std::string text;
};

const std::vector<Topic>& helpTopics();

}
