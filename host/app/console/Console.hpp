#pragma once

#include <array>
#include <mutex>
#include <string>
#include <string_view>

namespace tavrin::app
{

/// The standard streams of the program: answers go to standard output, messages to standard error,
/// each in whole lines. All functions may be called from several threads at once.
class Console
{
public:
    /// One of the two streams that the program writes.
    enum Stream : int
    {
        Output = 1,
        Error = 2
    };

    Console();

    /// Prints text on standard output. It is not an error if the reader of a pipe has gone away.
    void print(std::string_view text);

    /// Prints a message on standard error, on one line of bounded length.
    void message(const std::string& text);

    /// Prints text as it is on standard error.
    void lines(std::string_view text);

    /// Prints output that the program does not control, such as what a plug-in writes to std::cout.
    /// If it ends within a line, that line is ended before anything else is printed.
    void printForeign(Stream stream, std::string_view text);

    /// Discards everything given to `printForeign` for standard output from now on.
    void discardForeignOutput();

    /// Shows a status on the last line of the terminal in place of the previous one; an empty text
    /// erases it. Call only if `isTerminal()`.
    void showStatus(const std::string& text);

    /// Whether standard error can show a status.
    bool isTerminal() const { return mIsTerminal; }

    /// The number of characters in a line of the terminal.
    std::size_t width() const;

    /// Reserves standard output for `answer()`: everything else that would go there, including what
    /// plug-ins write, goes to standard error from now on. Returns the descriptor of the stream.
    int reserveOutput();

    /// Prints text on standard output even after `reserveOutput()`.
    void answer(std::string_view text);

    /// Throws `io::FileError` if anything could not be printed on standard output so far.
    void requireOutput();

private:
    void write(Stream stream, std::string_view text);
    void writeBytes(int descriptor, std::string_view text);
    void eraseStatus();
    bool& isLineOpen(Stream stream) { return mIsLineOpen.at(mAreOneTarget ? Output : stream); }

    std::mutex mMutex;
    bool mIsTerminal;
    /// Whether both streams lead to the same terminal or file, and so share their lines.
    bool mAreOneTarget;
    bool mHasStatus = false;
    bool mDiscardsForeignOutput = false;
    std::array<bool, 3> mIsLineOpen{};
    int mAnswerDescriptor = Output;
    int mOutputError = 0;
};

}
