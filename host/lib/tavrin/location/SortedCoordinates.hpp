#pragma once

#include <tavrin/location/FourFloats.hpp>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace tavrin
{

/// Counts ascending coordinates below bounds. A table of equal intervals, with the first coordinate of
/// each, makes this take constant time where coordinates are evenly spread.
class SortedCoordinates
{
public:
    /// The number of bounds in a query: one for each cell of a leaf of a tree.
    static constexpr std::size_t boundsAtOnce = 8;
    using Counts = std::array<std::uint32_t, boundsAtOnce>;

    /// Takes at least one coordinate. Coordinates may be infinite.
    explicit SortedCoordinates(std::vector<float> coordinates)
        : mCoordinates(std::move(coordinates))
    {
        assert(!mCoordinates.empty() && std::ranges::is_sorted(mCoordinates));
        const std::size_t numIntervals = std::min(2 * mCoordinates.size(), mostIntervals);
        mLast = static_cast<float>(numIntervals - 1);
        mPerUnit = mLast / (highest() - lowest());
        mIntervals.resize(numIntervals + 1, {static_cast<std::uint32_t>(mCoordinates.size()),
                                             std::numeric_limits<float>::quiet_NaN()});
        for (std::size_t i = mCoordinates.size(); i-- > 0;)
            mIntervals[static_cast<std::size_t>(intervals(FourFloats{} + mCoordinates[i])[0])] = {
                static_cast<std::uint32_t>(i), mCoordinates[i]};
        for (std::size_t i = numIntervals; i-- > 0;)
            if (mIntervals[i].begin > mIntervals[i + 1].begin)
                mIntervals[i] = mIntervals[i + 1];
    }

    float lowest() const { return mCoordinates.front(); }
    float highest() const { return mCoordinates.back(); }

    /// For each of `boundsAtOnce` bounds, how many coordinates are below it, or not above it.
    Counts numBelow(const float* bounds) const
    {
        return numWhere(bounds, [](float x, float bound) { return x < bound; });
    }
    Counts numUpTo(const float* bounds) const
    {
        return numWhere(bounds, [](float x, float bound) { return x <= bound; });
    }

private:
    /// Single precision represents these numbers exactly, up to 2^24; the table then takes at most 8 MB.
    static constexpr std::size_t mostIntervals = std::size_t{1} << 20;

    /// The first coordinate in an interval or after it, and its number.
    struct Interval
    {
        std::uint32_t begin;
        float first;
    };

    using FourFloats = detail::FourFloats;

    /// The intervals of four coordinates. This is monotonic, rounding included.
    detail::FourIntegers intervals(const FourFloats& coordinates) const
    {
        const FourFloats intervals = (coordinates - lowest()) * mPerUnit;
        const FourFloats atLeast = intervals > FourFloats{} ? intervals : FourFloats{};
        const FourFloats last = FourFloats{} + mLast;
        return __builtin_convertvector(atLeast < last ? atLeast : last, detail::FourIntegers);
    }

    template<typename Predicate>
    Counts numWhere(const float* bounds, const Predicate& holds) const
    {
        Counts counts;
        for (std::size_t start = 0; start < boundsAtOnce; start += 4)
        {
            const detail::FourIntegers indices = intervals(detail::loadFour(bounds + start));
            for (std::size_t n = 0; n < 4; ++n)
            {
                const Interval* const interval = &mIntervals[static_cast<std::size_t>(indices[n])];
                const float bound = bounds[start + n];
                counts[start + n] = interval->begin + (holds(interval->first, bound) ? 1 : 0);
                if (interval[1].begin - interval[0].begin > 1)
                    counts[start + n] = static_cast<std::uint32_t>(
                        std::partition_point(mCoordinates.begin() + interval[0].begin,
                                             mCoordinates.begin() + interval[1].begin,
                                             [&](float x) { return holds(x, bound); }) -
                        mCoordinates.begin());
            }
        }
        return counts;
    }

    std::vector<float> mCoordinates;
    float mLast;
    float mPerUnit;
    std::vector<Interval> mIntervals;
};

}
