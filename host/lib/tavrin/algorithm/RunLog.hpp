#pragma once

#include <tavrin/base/Export.hpp>

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>

namespace tavrin
{

/// A log that an algorithm writes to as a stream and that passes every line on as soon as it is
/// complete.
class TAVRIN_API RunLog
{
public:
    /// Takes a line without its end.
    using LineListener = std::function<void(const std::string& line)>;

    explicit RunLog(LineListener onLine) : mBuffer(std::move(onLine)), mStream(&mBuffer) {}

    std::ostream& stream() { return mStream; }

    /// Everything that was written since the last `restart`.
    const std::string& text() const { return mBuffer.text(); }

    /// Forgets what was written, and how the stream was set to write it.
    void restart();

    /// Passes on a last line that has no end.
    void finishLine() { mBuffer.finishLine(); }

private:
    class Buffer final : public std::streambuf
    {
    public:
        explicit Buffer(LineListener onLine) : mOnLine(std::move(onLine)) {}

        const std::string& text() const { return mText; }
        void clear();
        void finishLine();

    protected:
        std::streamsize xsputn(const char* characters, std::streamsize count) override;
        int_type overflow(int_type character) override;

    private:
        void passCompleteLines();

        LineListener mOnLine;
        std::string mText;
        std::size_t mNumPassed = 0;
    };

    Buffer mBuffer;
    std::ostream mStream;
};

}
