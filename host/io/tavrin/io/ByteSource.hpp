#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <span>

namespace tavrin::io
{

/// Bytes taken one after the other from where a stream stands.
class ByteSource
{
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Fills the target. Throws `Malformed` where there are fewer bytes.
    virtual void read(std::span<std::byte> target) = 0;
};

/// The bytes of the stream themselves.
class RawByteSource : public ByteSource
{
public:
    explicit RawByteSource(std::istream& stream) : mStream(stream) {}
    void read(std::span<std::byte> target) override;

private:
    std::istream& mStream;
};

/// Bytes written as base64. Several encoded runs, each with its own padding, read as one.
class Base64ByteSource : public ByteSource
{
public:
    explicit Base64ByteSource(std::istream& stream) : mStream(stream) {}
    void read(std::span<std::byte> target) override;

private:
    void refill();

    static constexpr std::size_t quadsPerRefill = 8192;

    std::istream& mStream;
    std::array<std::byte, 3 * quadsPerRefill> mDecoded;
    std::size_t mNext = 0;
    std::size_t mEnd = 0;
};

/// Turns the bytes of each number around.
void swapBytes(std::span<std::byte> bytes, std::size_t bytesPerNumber);

}
