#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tavrin::graphics::painter
{

/// Tells another process how many elements of a scene have been painted. A scene is gone through
/// several times, so that a pass over all elements counts only for a part of them.
class WorkMeter
{
public:
    /// `done` will count up to `total`.
    WorkMeter(std::atomic<std::uint64_t>& done, std::uint64_t total) : mDone(done), mTotal(total) {}

    void setNumPasses(std::size_t numPasses) { mNumPasses = numPasses; }

    void advance(std::size_t count)
    {
        mCount += count;
        mDone = std::min<std::uint64_t>(mCount / mNumPasses, mTotal);
    }

private:
    std::atomic<std::uint64_t>& mDone;
    std::uint64_t mTotal;
    std::size_t mNumPasses = 1;
    std::size_t mCount = 0;
};

}
