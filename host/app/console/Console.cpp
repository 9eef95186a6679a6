#include "Console.hpp"

#include "../text/Layout.hpp"

#include <tavrin/io/FileError.hpp>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string_view>

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
    return isatty(STDERR_FILENO) != 0 &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

}

Console::Console() : mIsTerminal(canShowStatus()) {}

void Console::print(const std::string& text)
{
    const std::scoped_lock lock(mMutex);
    eraseStatus();
    std::cout << text << std::flush;
    noteFailure();
}

void Console::line(const std::string& text)
{
    lines(oneLine(text) + '\n');
}

void Console::lines(const std::string& text)
{
    const std::scoped_lock lock(mMutex);
    eraseStatus();
    std::cerr << text << std::flush;
}

void Console::status(const std::string& text)
{
    const std::scoped_lock lock(mMutex);
    eraseStatus();
    mHasStatus = !text.empty();
    std::cerr << text << std::flush;
}

void Console::eraseStatus()
{
    if (mHasStatus)
        std::cerr << "\r\x1b[K";
    mHasStatus = false;
}

std::size_t Console::width() const
{
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

void Console::noteFailure()
{
    if (!std::cout && mOutputError == 0)
        mOutputError = isReaderGone(STDOUT_FILENO) ? EPIPE : (errno != 0 ? errno : EIO);
}

void Console::finish()
{
    const std::scoped_lock lock(mMutex);
    eraseStatus();
    std::cout << std::flush;
    noteFailure();
    if (mOutputError != 0 && mOutputError != EPIPE)
        throw io::FileError("standard output", std::strerror(mOutputError));
}

}
