#pragma once

#include <cerrno>
#include <mutex>
#include <string>

namespace tavrin::app
{

/// The two standard streams: answers go to standard output, messages to standard error. May be
/// used by several threads.
class Console
{
public:
    Console();

    /// Prints on standard output. A reader that went away is no failure.
    void print(const std::string& text);

    /// Prints one line on standard error, without control characters. A status makes way for it.
    void line(const std::string& text);

    /// Prints lines as they are on standard error.
    void lines(const std::string& text);

    /// Shows a status in the last line of the terminal, in the place of an earlier one; an empty
    /// text erases it. Only for a terminal.
    void status(const std::string& text);

    /// Whether standard error can show a status.
    bool isTerminal() const { return mIsTerminal; }

    /// The number of characters in a line of the terminal.
    std::size_t width() const;

    /// Throws `FileError` where something could not be printed on standard output.
    void finish();

private:
    void noteFailure();
    void eraseStatus();

    std::mutex mMutex;
    bool mIsTerminal;
    bool mHasStatus = false;
    int mOutputError = 0;
};

}
