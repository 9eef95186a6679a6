#pragma once

#include <streambuf>
#include <vector>

namespace tavrin::io
{

/// A stream buffer that writes to an open file, remembers why writing failed, and stops writing soon
/// after an abort flag is set.
class FileBuffer : public std::streambuf
{
public:
    /// The caller closes the descriptor.
    FileBuffer(int descriptor, const volatile bool& abortFlag);

    /// The error number of the first failure; 0 if there was none.
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
