#pragma once

#include "../process/PainterJob.hpp"

#include <algorithm>

namespace tavrin::graphics::painter
{

/// Counts the elements of a scene that have been painted, for another process. Each pass over all
/// elements counts for an equal part of them.
class WorkMeter
{
public:
    explicit WorkMeter(process::Work& work) : mWork(work) {}

    void setNumPasses(std::size_t numPasses) { mNumPasses = numPasses; }

    void advance(std::size_t count)
    {
        const std::uint64_t sum = mCount += count;
        mWork.done = std::min<std::uint64_t>(sum / mNumPasses, mWork.total);
    }
    /// Counts all elements once. May be called from several threads at once.
    void advancePass() { advance(mWork.total); }

private:
    process::Work& mWork;
    std::size_t mNumPasses = 1;
    std::atomic<std::uint64_t> mCount = 0;
};

}
