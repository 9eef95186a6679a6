#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <span>

namespace tavrin::io
{

/// A sequence of bytes that is read from the current position of a stream.
class ByteSource
{
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Fills the target with the next bytes. Throws `Malformed` where there are too few.
    virtual void read(std::span<std::byte> target) = 0;
};

/// Bytes that the stream contains as they are.
class RawByteSource : public ByteSource
{
public:
    explicit RawByteSource(std::istream& stream) : mStream(stream) {}
    void read(std::span<std::byte> target) override;

private:
    std::istream& mStream;
};

/// Bytes that the stream contains as base64. Successive encoded texts, each with its own padding, are
/// read as one sequence.
class Base64ByteSource : public ByteSource
{
public:
    explicit Base64ByteSource(std::istream& stream) : mStream(stream) {}
    void read(std::span<std::byte> target) override;

    /// Whether bytes follow the last one that was read.
    bool hasMore();

private:
    void refill();

    static constexpr std::size_t quadsPerRefill = 8192;

    std::istream& mStream;
    std::array<std::byte, 3 * quadsPerRefill> mDecoded;
    std::size_t mNext = 0;
    std::size_t mEnd = 0;
};

/// Reverses the order of the bytes of each number.
void swapBytes(std::span<std::byte> bytes, std::size_t bytesPerNumber);

}
