#include "ForeignOutput.hpp"

#include "Console.hpp"

#include <ext/stdio_sync_filebuf.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <system_error>
#include <utility>
#include <vector>

namespace tavrin::app
{

/// Redirects one standard stream of the C library, and the C++ streams that are synchronized with it.
class ForeignOutput::Redirection
{
public:
    Redirection(Console& console, Console::Stream target, std::FILE*& file,
                const std::vector<std::ostream*>& streams)
        : mConsole(console), mTarget(target), mFile(file), mOldFile(file),
          mNewFile(fopencookie(this, "w", {nullptr, &Redirection::write, nullptr, nullptr})),
          mBuffer(mNewFile)
    {
        if (mNewFile == nullptr)
            throw std::system_error(errno, std::generic_category(), "standard streams");
        std::setvbuf(mNewFile, nullptr, _IOLBF, BUFSIZ);
        std::fflush(mOldFile);
        mFile = mNewFile;
        for (std::ostream* const stream : streams)
            mOldBuffers.emplace_back(stream, stream->rdbuf(&mBuffer));
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection()
    {
        for (const auto& [stream, buffer] : mOldBuffers)
            stream->rdbuf(buffer);
        mFile = mOldFile;
        std::fclose(mNewFile);
    }

private:
    static ssize_t write(void* cookie, const char* bytes, std::size_t count)
    {
        const auto& self = *static_cast<const Redirection*>(cookie);
        self.mConsole.printForeign(self.mTarget, {bytes, count});
        return static_cast<ssize_t>(count);
    }

    Console& mConsole;
    Console::Stream mTarget;
    std::FILE*& mFile;
    std::FILE* mOldFile;
    std::FILE* mNewFile;
    /// It has no memory of its own, so that the output of both libraries stays in order.
    __gnu_cxx::stdio_sync_filebuf<char> mBuffer;
    std::vector<std::pair<std::ostream*, std::streambuf*>> mOldBuffers;
};

ForeignOutput::ForeignOutput(Console& console)
    : mOutput(std::make_unique<Redirection>(console, Console::Output, stdout,
                                            std::vector<std::ostream*>{&std::cout})),
      mError(std::make_unique<Redirection>(console, Console::Error, stderr,
                                           std::vector<std::ostream*>{&std::cerr, &std::clog}))
{
}

ForeignOutput::~ForeignOutput() = default;

}
