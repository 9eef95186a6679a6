#pragma once

#include <tavrin/base/Export.hpp>

#include <streambuf>
#include <vector>

namespace tavrin::io
{

/// A stream buffer over an open file that remembers why writing failed and stops writing soon
/// after an abort flag is set.
class TAVRIN_API FileBuffer : public std::streambuf
{
public:
    /// The descriptor stays the caller's.
    FileBuffer(int descriptor, const volatile bool& abortFlag);

    /// The system's number of the first error, 0 as long as there was none.
    int error() const { return mError; }

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    /// Returns whether all bytes were written.
    bool write(const char* bytes, std::size_t count);

    int mDescriptor;
    const volatile bool& mAbortFlag;
    int mError = 0;
    std::vector<char> mBuffer;
};

}
