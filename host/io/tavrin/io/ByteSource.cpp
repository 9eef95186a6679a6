#include <tavrin/io/ByteSource.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/StoredArray.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tavrin::io
{

namespace
{

[[noreturn]] void failTruncated()
{
    throw Malformed("the data is truncated");
}

constexpr std::uint8_t padding = 64;
constexpr std::uint8_t blank = 65;
constexpr std::uint8_t foreign = 66;

constexpr std::array<std::uint8_t, 256> makeBase64Digits()
{
    std::array<std::uint8_t, 256> digits{};
    digits.fill(foreign);
    std::uint8_t digit = 0;
    for (const auto& [first, last] : {std::pair{'A', 'Z'}, {'a', 'z'}, {'0', '9'}})
        for (char character = first; character <= last; ++character)
            digits[static_cast<unsigned char>(character)] = digit++;
    digits['+'] = 62;
    digits['/'] = 63;
    digits['='] = padding;
    for (const char character : {' ', '\t', '\n', '\r'})
        digits[static_cast<unsigned char>(character)] = blank;
    return digits;
}

constexpr auto base64Digits = makeBase64Digits();

/// The digit that a character stands for; `foreign` for the end of a stream.
std::uint8_t digitOf(int character)
{
    return character < 0 || character > 255 ? foreign
                                            : base64Digits[static_cast<std::size_t>(character)];
}

template<typename Number>
void swapAll(std::span<std::byte> bytes)
{
    std::byte* const data = bytes.data();
    const std::size_t count = bytes.size() / sizeof(Number);
#pragma omp parallel for schedule(static) if (count > worthThreads)
    for (std::size_t i = 0; i < count; ++i)
    {
        Number number;
        std::memcpy(&number, data + i * sizeof(Number), sizeof(Number));
        if constexpr (sizeof(Number) == 2)
            number = __builtin_bswap16(number);
        else if constexpr (sizeof(Number) == 4)
            number = __builtin_bswap32(number);
        else
            number = __builtin_bswap64(number);
        std::memcpy(data + i * sizeof(Number), &number, sizeof(Number));
    }
}

}

void RawByteSource::read(std::span<std::byte> target)
{
    const auto count = static_cast<std::streamsize>(target.size());
    if (mStream.rdbuf()->sgetn(reinterpret_cast<char*>(target.data()), count) != count)
        failTruncated();
}

void Base64ByteSource::read(std::span<std::byte> target)
{
    while (!target.empty())
    {
        if (mNext == mEnd)
            refill();
        const std::size_t count = std::min(target.size(), mEnd - mNext);
        std::copy_n(mDecoded.begin() + static_cast<std::ptrdiff_t>(mNext), count, target.begin());
        mNext += count;
        target = target.subspan(count);
    }
}

bool Base64ByteSource::hasMore()
{
    std::streambuf& buffer = *mStream.rdbuf();
    int character = buffer.sgetc();
    while (digitOf(character) == blank)
        character = buffer.snextc();
    return mNext < mEnd || digitOf(character) != foreign;
}

void Base64ByteSource::refill()
{
    mNext = mEnd = 0;
    std::streambuf& buffer = *mStream.rdbuf();
    for (std::size_t quad = 0; quad < quadsPerRefill; ++quad)
    {
        std::array<std::uint8_t, 4> digits;
        for (std::size_t i = 0; i < digits.size();)
        {
            const int character = buffer.sgetc();
            const std::uint8_t digit = digitOf(character);
            if (digit == foreign)
            {
                if (mEnd == 0)
                    failTruncated();
                return;
            }
            buffer.sbumpc();
            if (digit != blank)
                digits[i++] = digit;
        }
        // A byte needs two digits at least, and only padding may follow padding.
        const std::size_t bytes = digits[2] == padding ? 1 : digits[3] == padding ? 2 : 3;
        if (digits[0] == padding || digits[1] == padding || (bytes == 1 && digits[3] != padding))
            failTruncated();
        const std::uint32_t bits = static_cast<std::uint32_t>(digits[0]) << 18 |
                                   static_cast<std::uint32_t>(digits[1]) << 12 |
                                   (digits[2] & 63U) << 6 | (digits[3] & 63U);
        for (std::size_t i = 0; i < bytes; ++i)
            mDecoded[mEnd++] = static_cast<std::byte>(bits >> (16 - 8 * i) & 255U);
    }
}

void swapBytes(std::span<std::byte> bytes, std::size_t bytesPerNumber)
{
    if (bytesPerNumber == 2)
        swapAll<std::uint16_t>(bytes);
    else if (bytesPerNumber == 4)
        swapAll<std::uint32_t>(bytes);
    else if (bytesPerNumber == 8)
        swapAll<std::uint64_t>(bytes);
}

}
