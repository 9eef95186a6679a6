#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace tavrin::graphics::painter
{

/// Tells another process what share of some work is done.
class WorkMeter
{
public:
    /// `done` will count up to `whole`.
    WorkMeter(std::atomic<std::uint32_t>& done, std::uint32_t whole) : mDone(done), mWhole(whole) {}

    /// How much work there will be, in the unit of `advance`.
    void expect(std::size_t total) { mTotal = total; }

    void advance(std::size_t count)
    {
        mCount += count;
        const double share =
            static_cast<double>(mCount) / static_cast<double>(std::max(mTotal, mCount));
        mDone = static_cast<std::uint32_t>(share * mWhole);
    }

private:
    std::atomic<std::uint32_t>& mDone;
    std::uint32_t mWhole;
    std::size_t mTotal = 0;
    std::size_t mCount = 0;
};

}
