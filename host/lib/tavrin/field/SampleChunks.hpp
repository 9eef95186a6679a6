#pragma once

#include <tavrin/domain/Lattice.hpp>

#include <optional>
#include <vector>

namespace tavrin
{

/// Consecutive positions that are evaluated, and counted as progress, together.
struct SampleRun
{
    std::size_t first;
    std::size_t count;
};

/// The largest number of positions in a run. What a run takes fits into the nearest cache, and the
/// work of a run is long beside that of counting it.
inline constexpr std::size_t positionsPerRun = 256;

/// Positions that one thread prepares together.
struct SampleChunk
{
    std::vector<SampleRun> runs;
    /// The part of the lattice that the positions are, where they are prepared as a lattice.
    std::optional<LatticeBlock> block;

    /// Divides consecutive positions into runs and adds them.
    void add(std::size_t first, std::size_t count);

    std::size_t first() const { return runs.front().first; }
    std::size_t count() const;
};

/// The positions first ... last - 1 in chunks of at most `atMost` consecutive ones.
std::vector<SampleChunk> consecutiveChunks(std::size_t first, std::size_t last, std::size_t atMost);

/// The positions first ... last - 1 of a lattice in chunks of at most `atMost`, which are compact
/// blocks where that is possible.
template<std::size_t D>
std::vector<SampleChunk> latticeChunks(const Lattice<D>& lattice, std::size_t first,
                                       std::size_t last, std::size_t atMost);

}
