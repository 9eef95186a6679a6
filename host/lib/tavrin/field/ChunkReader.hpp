#pragma once

#include <tavrin/field/SampleChunks.hpp>
#include <tavrin/field/SamplePositions.hpp>
#include <tavrin/field/SpatialOrder.hpp>

namespace tavrin
{

/// The order in which the positions of a chunk are evaluated: entry i is the index in the chunk of the
/// position that comes i-th. Empty where they are evaluated as they come.
using ChunkOrder = std::vector<std::uint32_t>;

/// Reads the positions of one chunk after the other, run by run. It can fetch whole chunks and deliver
/// their positions in spatial order, which needs memory for the largest chunk.
template<std::size_t D>
class ChunkReader
{
public:
    using Position = Tensor<double, D>;

    ChunkReader(const SamplePositions<D>& positions, bool isSorting)
        : mPositions(positions), mIsSorting(isSorting)
    {
    }

    /// Moves to a chunk. Returns the order in which `read` delivers its positions.
    ChunkOrder open(const SampleChunk& chunk)
    {
        if (!mIsSorting)
            return {};
        mScratch.resize(std::max(mScratch.size(), chunk.count()));
        mFetched = mPositions.read(chunk.first(), std::span(mScratch).first(chunk.count()));
        return spatialOrder(mFetched);
    }

    /// The positions of a run of the chunk that was opened last. `before` is the number of positions
    /// in the runs before it. Valid until the next call.
    std::span<const Position> read(const SampleRun& run, std::size_t before,
                                   const ChunkOrder& order)
    {
        if (!mIsSorting)
            return mPositions.read(run.first, std::span(mRun).first(run.count));
        if (order.empty())
            return mFetched.subspan(before, run.count);
        for (std::size_t k = 0; k < run.count; ++k)
            mRun[k] = mFetched[order[before + k]];
        return std::span(mRun).first(run.count);
    }

private:
    const SamplePositions<D>& mPositions;
    bool mIsSorting;
    std::vector<Position> mScratch;
    std::span<const Position> mFetched;
    std::array<Position, positionsPerRun> mRun;
};

}
