#include "Command.hpp"

#include "../text/HelpText.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <CLI/CLI.hpp>

namespace tavrin::app
{

Command::Command(CLI::App& program, CommandText text)
    : mText(std::move(text)), mSyntax(*program.add_subcommand(mText.name, mText.summary))
{
}

std::string Command::help(const Words&, const Session&) const
{
    return helpText(declaration());
}

const std::string& Command::firstWord(const Words& words) const
{
    if (words.empty())
        throw usage_error(mText.name + " needs " + mText.words + "; see \"tavrin " + mText.name +
                          " --help\"");
    return words.front();
}

const std::string& Command::onlyWord(const Words& words) const
{
    refuseWords(words, 1);
    return firstWord(words);
}

void Command::refuseWords(const Words& words, std::size_t expected) const
{
    if (words.size() > expected)
        throw usage_error("unexpected word \"" + words[expected] + "\"; the usage is \"tavrin " +
                          mText.name + (mText.words.empty() ? "" : " " + mText.words) + "\"");
}

}
