#pragma once

#include "../text/CommandText.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace tavrin::app
{

struct Session;

/// One command of the program. A derived class states its texts and adds its options in the
/// constructor; help, manual page and completion are made from this declaration.
class Command
{
public:
    using Words = std::vector<std::string>;

    /// Declares the command as a subcommand of the program.
    Command(CLI::App& program, CommandText text);
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    const std::string& name() const { return mText.name; }
    CommandDeclaration declaration() const { return {mText, mSyntax}; }

    /// The text that `--help` prints, with `words` on the command line.
    virtual std::string help(const Words& words, const Session& session) const;

    virtual void execute(const Words& words, Session& session) = 0;

protected:
    /// The first of the words. Throws `usage_error` if there is none.
    const std::string& firstWord(const Words& words) const;

    /// The only word. Throws `usage_error` if there is none or more than one.
    const std::string& onlyWord(const Words& words) const;

    /// Throws `usage_error` if there are more words than expected.
    void refuseWords(const Words& words, std::size_t expected = 0) const;

    /// The object to which a derived class adds its options.
    CLI::App& syntax() { return mSyntax; }

private:
    CommandText mText;
    CLI::App& mSyntax;
};

}
