#include <tavrin/io/write/FileBuffer.hpp>

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace tavrin::io
{

namespace
{

constexpr std::size_t bufferSize = std::size_t{1} << 18;

/// The number of bytes written between two checks of the abort flag.
constexpr std::size_t bytesAtOnce = std::size_t{1} << 22;

}

FileBuffer::FileBuffer(int descriptor, const volatile bool& abortFlag)
    : mDescriptor(descriptor), mAbortFlag(abortFlag), mBuffer(bufferSize)
{
    setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
}

FileBuffer::int_type FileBuffer::overflow(int_type character)
{
    if (sync() != 0)
        return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof()))
        sputc(traits_type::to_char_type(character));
    return traits_type::not_eof(character);
}

std::streamsize FileBuffer::xsputn(const char* bytes, std::streamsize count)
{
    if (static_cast<std::size_t>(count) < bufferSize)
        return std::streambuf::xsputn(bytes, count);
    return sync() == 0 && write(bytes, static_cast<std::size_t>(count)) ? count : 0;
}

int FileBuffer::sync()
{
    const bool written = write(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
    return written ? 0 : -1;
}

FileBuffer::pos_type FileBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                         std::ios_base::openmode)
{
    const bool onlyAsks = offset == 0 && from == std::ios_base::cur;
    if (onlyAsks)
        return lseek(mDescriptor, 0, SEEK_CUR) + (pptr() - pbase());
    if (sync() != 0)
        return pos_type(off_type(-1));
    const int origin = from == std::ios_base::beg   ? SEEK_SET
                       : from == std::ios_base::cur ? SEEK_CUR
                                                    : SEEK_END;
    return lseek(mDescriptor, offset, origin);
}

FileBuffer::pos_type FileBuffer::seekpos(pos_type position, std::ios_base::openmode which)
{
    return seekoff(off_type(position), std::ios_base::beg, which);
}

bool FileBuffer::write(const char* bytes, std::size_t count)
{
    while (count > 0 && mError == 0 && !mAbortFlag)
    {
        const ssize_t written = ::write(mDescriptor, bytes, std::min(count, bytesAtOnce));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
        {
            mError = written < 0 ? errno : ENOSPC;
            break;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return count == 0;
}

}
