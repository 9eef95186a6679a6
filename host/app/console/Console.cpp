#include "Console.hpp"

#include "Messages.hpp"

#include <tavrin/io/FileError.hpp>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tavrin::app
{

namespace
{

/// Whether the reader of a pipe or a connection has closed its end.
bool isReaderGone(int descriptor)
{
    pollfd request{.fd = descriptor, .events = POLLOUT, .revents = 0};
    return poll(&request, 1, 0) > 0 && (request.revents & (POLLERR | POLLHUP)) != 0;
}

bool canShowStatus()
{
    const char* const terminal = std::getenv("TERM");
    return isatty(Console::Error) != 0 &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

bool areOneTarget()
{
    struct stat output
    {};
    struct stat error
    {};
    return fstat(Console::Output, &output) == 0 && fstat(Console::Error, &error) == 0 &&
           output.st_dev == error.st_dev && output.st_ino == error.st_ino;
}

/// Flushes output of other code that does not end with a line end. The console must not be locked,
/// since `ForeignOutput` calls it.
void flushForeignOutput()
{
    std::fflush(stdout);
    std::fflush(stderr);
}

}

Console::Console() : mIsTerminal(canShowStatus()), mAreOneTarget(areOneTarget()) {}

void Console::print(std::string_view text)
{
    flushForeignOutput();
    const std::scoped_lock lock(mMutex);
    write(Output, text);
}

void Console::message(const std::string& text)
{
    lines(boundedMessage(text) + '\n');
}

void Console::lines(std::string_view text)
{
    flushForeignOutput();
    const std::scoped_lock lock(mMutex);
    write(Error, text);
}

void Console::printForeign(Stream stream, std::string_view text)
{
    const std::scoped_lock lock(mMutex);
    if (text.empty() || (mDiscardsForeignOutput && stream == Output))
        return;
    eraseStatus();
    writeBytes(stream, text);
    isLineOpen(stream) = text.back() != '\n';
}

void Console::discardForeignOutput()
{
    const std::scoped_lock lock(mMutex);
    mDiscardsForeignOutput = true;
}

void Console::showStatus(const std::string& text)
{
    const std::scoped_lock lock(mMutex);
    eraseStatus();
    if (text.empty() || isLineOpen(Error))
        return;
    mHasStatus = true;
    writeBytes(Error, text);
}

int Console::reserveOutput()
{
    const std::scoped_lock lock(mMutex);
    const int answers = fcntl(Output, F_DUPFD_CLOEXEC, 3);
    if (answers < 0 || dup2(Error, Output) < 0)
        throw io::FileError("standard output", std::strerror(errno));
    mAnswerDescriptor = answers;
    mAreOneTarget = true;
    return answers;
}

void Console::answer(std::string_view text)
{
    flushForeignOutput();
    const std::scoped_lock lock(mMutex);
    if (mAnswerDescriptor == Output)
        return write(Output, text);
    eraseStatus();
    writeBytes(mAnswerDescriptor, text);
}

void Console::requireOutput()
{
    flushForeignOutput();
    const std::scoped_lock lock(mMutex);
    if (mOutputError != 0 && mOutputError != EPIPE)
        throw io::FileError("standard output", std::strerror(mOutputError));
}

std::size_t Console::width() const
{
    winsize size{};
    const bool isKnown = ioctl(Error, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

void Console::write(Stream stream, std::string_view text)
{
    if (text.empty())
        return;
    eraseStatus();
    if (std::exchange(isLineOpen(stream), false))
        writeBytes(stream, "\n");
    writeBytes(stream, text);
}

void Console::writeBytes(int descriptor, std::string_view text)
{
    while (!text.empty() && (descriptor == Error || mOutputError == 0))
    {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
        {
            pollfd request{.fd = descriptor, .events = POLLOUT, .revents = 0};
            poll(&request, 1, -1);
        }
        else if (errno != EINTR)
        {
            if (descriptor != Error)
                mOutputError = isReaderGone(descriptor) ? EPIPE : errno;
            return;
        }
    }
}

void Console::eraseStatus()
{
    if (std::exchange(mHasStatus, false))
        writeBytes(Error, "\r\x1b[K");
}

}
