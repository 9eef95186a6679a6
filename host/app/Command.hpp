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

struct Session;

/// A command line for the reader to try.
struct Example
{
    std::string command;
    std::string meaning;
};

/// One command of the program: its declaration, from which its help, the man page and the
/// completion are made, and what it does.
class Command
{
public:
    using Words = std::vector<std::string>;

    struct Text
    {
        std::string name;
        /// The words it takes beside options: "FILE".
        std::string words;
        std::string summary;
        /// Paragraphs separated by empty lines; lines that begin with a blank stay as they are.
        std::string details;
        std::vector<Example> examples;
    };

    /// Declares the command below the program. A derived class adds its options.
    Command(CLI::App& program, Text text);
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    const Text& text() const { return mText; }
    const CLI::App& syntax() const { return mSyntax; }

    /// What `--help` prints.
    virtual std::string help(const Words& words, const Session& session) const;

    virtual void execute(const Words& words, Session& session) = 0;

protected:
    /// The first of the words. Throws `usage_error` where there is none.
    const std::string& firstWord(const Words& words) const;

    /// The same for a command that takes one word only.
    const std::string& onlyWord(const Words& words) const;

    /// Refuses words. Throws `usage_error`.
    void refuseWords(const Words& words, std::size_t expected = 0) const;

    /// For a derived class to add its options to.
    CLI::App& declaration() { return mSyntax; }

private:
    Text mText;
    CLI::App& mSyntax;
};

}
