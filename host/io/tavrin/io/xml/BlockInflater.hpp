#pragma once

#include <memory>
#include <span>
#include <string>

namespace tavrin::io
{

/// Uncompresses the blocks of an array. Each thread needs an object of its own.
class BlockInflater
{
public:
    BlockInflater() = default;
    BlockInflater(const BlockInflater&) = delete;
    BlockInflater& operator=(const BlockInflater&) = delete;
    virtual ~BlockInflater() = default;

    /// Returns whether the block was valid and filled the output.
    virtual bool inflate(std::span<const std::byte> block, std::span<std::byte> output) = 0;
};

/// Makes the inflater for what VTK XML files call a compressor, "vtkZLibDataCompressor" and so on. To be
/// called by one thread at a time. Throws `Malformed` for other names.
std::unique_ptr<BlockInflater> makeInflater(const std::string& compressor);

}
