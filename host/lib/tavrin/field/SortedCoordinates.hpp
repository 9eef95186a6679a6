#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavrin
{

/// Ascending coordinates, to find those in an interval. It has a table of equal intervals, of which
/// each knows where its coordinates begin.
class SortedCoordinates
{
public:
    /// At least one. They may be infinite.
    explicit SortedCoordinates(std::vector<float> coordinates)
        : mCoordinates(std::move(coordinates)), mHighest(mCoordinates.back())
    {
        const std::size_t numIntervals = std::min(2 * mCoordinates.size(), mostIntervals);
        mLast = static_cast<float>(numIntervals - 1);
        mPerUnit = mLast / (mCoordinates.back() - mCoordinates.front());
        mBegin.resize(numIntervals + 1, static_cast<std::uint32_t>(mCoordinates.size()));
        for (std::size_t i = mCoordinates.size(); i-- > 0;)
            mBegin[interval(mCoordinates[i])] = static_cast<std::uint32_t>(i);
        for (std::size_t i = mBegin.size() - 1; i-- > 0;)
            mBegin[i] = std::min(mBegin[i], mBegin[i + 1]);
        // To be looked at where there is none.
        mCoordinates.push_back(0.0F);
    }

    float lowest() const { return mCoordinates.front(); }
    float highest() const { return mHighest; }

    /// The number of those below a bound, or not above it.
    std::uint32_t numBelow(float bound) const
    {
        return numWhere(bound, [bound](float x) { return x < bound; });
    }
    std::uint32_t numUpTo(float bound) const
    {
        return numWhere(bound, [bound](float x) { return x <= bound; });
    }

private:
    /// Single precision counts them exactly.
    static constexpr std::size_t mostIntervals = std::size_t{1} << 20;

    /// Rounding keeps the order of coordinates, and so does this.
    std::size_t interval(float coordinate) const
    {
        const float interval = (coordinate - mCoordinates.front()) * mPerUnit;
        return static_cast<std::size_t>(
            static_cast<std::int32_t>(interval > 0.0F ? std::min(interval, mLast) : 0.0F));
    }

    template<typename Predicate>
    std::uint32_t numWhere(float bound, const Predicate& holds) const
    {
        const std::size_t i = interval(bound);
        const std::uint32_t begin = mBegin[i];
        const std::uint32_t end = mBegin[i + 1];
        // Where there is one or none it takes no branch, which would be a guess.
        if (end - begin <= 1)
            return begin + static_cast<std::uint32_t>((end > begin) & holds(mCoordinates[begin]));
        return static_cast<std::uint32_t>(
            std::partition_point(mCoordinates.begin() + begin, mCoordinates.begin() + end, holds) -
            mCoordinates.begin());
    }

    std::vector<float> mCoordinates;
    float mHighest;
    float mLast;
    float mPerUnit;
    std::vector<std::uint32_t> mBegin;
};

}
