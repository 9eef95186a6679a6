#pragma once

#include <tavrin/field/CellTree.hpp>
#include <tavrin/field/Lattice.hpp>

#include <algorithm>
#include <vector>

namespace tavrin
{

/// Ascending coordinates, to find those in an interval. It has a table of equal intervals, of which
/// each knows where its coordinates begin.
class SortedCoordinates
{
public:
    /// At least one. They are finite.
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

/// Goes from leaf to leaf of a tree and finds the positions of a lattice in the boxes of the cells.
/// That is faster than to search for the positions where the cells among them are not many more.
template<std::size_t D>
class LatticeSweep
{
public:
    /// The tree keeps boxes of its cells. The lattice is scaled as the cells are, and not empty.
    LatticeSweep(const CellTree<D>& tree, const Lattice<D>& lattice);

    /// Whether it pays.
    bool isWorthwhile() const { return mIsWorthwhile; }

    /// Calls `atLeaf(cells, blocks)` with up to `CellTree::leafCapacity` cells and as many blocks of
    /// the lattice: all positions in the bounds of a cell, and few others. Before that it calls
    /// `announce(cells)`, while there is time to fetch them. Where it does not pay it misses some.
    template<typename Announce, typename AtLeaf>
    void run(const Announce& announce, const AtLeaf& atLeaf) const
    {
        for (std::size_t n = 0; n < mLeaves.size(); ++n)
        {
            if (n + 4 < mLeaves.size())
                mLeaves[n + 4].fetch();
            if (n + 2 < mLeaves.size())
                announce(mLeaves[n + 2].cells());
            const auto& leaf = mLeaves[n];
            std::array<LatticeBlock, CellTree<D>::leafCapacity> blocks;
            for (std::size_t axis = 0; axis < D; ++axis)
                for (std::size_t cell = 0; cell < leaf.cells().size(); ++cell)
                {
                    blocks[cell].first[axis] = mAxes[axis].numBelow(leaf.lower(axis)[cell]);
                    blocks[cell].end[axis] = mAxes[axis].numUpTo(leaf.upper(axis)[cell]);
                }
            atLeaf(leaf.cells(), std::span<const LatticeBlock>(blocks).first(leaf.cells().size()));
        }
    }

private:
    /// How many cells there may be for each position, so that it pays to look at all of them.
    static constexpr std::size_t cellsPerPosition = 4;

    std::vector<SortedCoordinates> mAxes;
    std::vector<typename CellTree<D>::Leaf> mLeaves;
    bool mIsWorthwhile;
};

template<std::size_t D>
LatticeSweep<D>::LatticeSweep(const CellTree<D>& tree, const Lattice<D>& lattice)
{
    std::array<float, D> lower;
    std::array<float, D> upper;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        std::vector<float> mapped(lattice.planes[axis].size());
        std::ranges::transform(lattice.planes[axis], mapped.begin(),
                               [&](double coordinate) { return tree.map(axis, coordinate); });
        mAxes.emplace_back(std::move(mapped));
        lower[axis] = mAxes[axis].lowest();
        upper[axis] = mAxes[axis].highest();
    }
    mIsWorthwhile = tree.findLeaves(lower, upper, cellsPerPosition * lattice.size(), mLeaves);
}

}
