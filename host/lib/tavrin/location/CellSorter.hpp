#pragma once

#include <tavrin/base/LargeVector.hpp>

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>

namespace tavrin
{

/// A box in single precision.
template<std::size_t D>
struct FloatBox
{
    std::array<float, D> lower;
    std::array<float, D> upper;

    static FloatBox empty()
    {
        FloatBox box;
        box.lower.fill(std::numeric_limits<float>::infinity());
        box.upper.fill(-std::numeric_limits<float>::infinity());
        return box;
    }

    void add(const FloatBox& other)
    {
        for (std::size_t i = 0; i < D; ++i)
        {
            lower[i] = std::min(lower[i], other.lower[i]);
            upper[i] = std::max(upper[i], other.upper[i]);
        }
    }
};

/// Divides the cells of a grid recursively into spatially separate halves, for a tree that is built from
/// the top down.
template<std::size_t D>
class CellSorter
{
public:
    /// Cells that belong together, stored next to each other in one of two arrays: each division moves
    /// them to the other one.
    struct Range
    {
        std::uint32_t begin;
        std::uint32_t end;
        bool isSpare;

        std::uint32_t size() const { return end - begin; }
    };

    /// Calls `boxOf(cell)` for each cell, on all threads if there are many cells. Cells whose box is not
    /// finite are left out.
    template<typename BoxOf>
    CellSorter(std::size_t numCells, const BoxOf& boxOf) : mBoxes(numCells), mItems(numCells)
    {
        bool areAllFinite = true;
#pragma omp parallel for schedule(static) reduction(&& : areAllFinite) if (numCells >= manyCells)
        for (std::size_t cell = 0; cell < numCells; ++cell)
        {
            const FloatBox<D> box = boxOf(cell);
            mBoxes[cell] = box;
            Item& item = mItems[cell];
            item.cell = static_cast<std::uint32_t>(cell);
            for (std::size_t i = 0; i < D; ++i)
            {
                item.middle[i] = 0.5F * (box.lower[i] + box.upper[i]);
                areAllFinite = areAllFinite && std::isfinite(item.middle[i]);
            }
        }
        if (!areAllFinite)
            std::erase_if(mItems,
                          [](const Item& item) {
                              return !std::ranges::all_of(item.middle,
                                                          [](float x) { return std::isfinite(x); });
                          });
        mSpareItems = LargeVector<Item>(mItems.size());
    }

    /// The cells that were not left out.
    Range all() const { return {0, static_cast<std::uint32_t>(mItems.size()), false}; }

    const FloatBox<D>& box(std::uint32_t cell) const { return mBoxes[cell]; }

    /// Divides a range of at least two cells, at a depth of the tree, by a plane between them.
    std::pair<Range, Range> halve(const Range& range, int depth)
    {
        assert(range.size() >= 2);
        const Item* const items = itemsOf(range.isSpare);
        Item* const spare = itemsOf(!range.isSpare);
        const std::uint32_t begin = range.begin;
        const std::uint32_t end = range.end;
        FloatBox<D> middles = FloatBox<D>::empty();
        for (std::uint32_t i = begin; i < end; ++i)
            middles.add({items[i].middle, items[i].middle});
        const std::size_t axis = longestAxis(middles, items, begin, end);
        const float plane = 0.5F * middles.lower[axis] + 0.5F * middles.upper[axis];

        // Every item is written to both ends, and only the counter of its own end moves on. This takes
        // no branch, which would be mispredicted for about half of the items.
        std::uint32_t left = begin;
        std::uint32_t right = end - 1;
        for (std::uint32_t i = begin; i < end; ++i)
        {
            spare[left] = items[i];
            spare[right] = items[i];
            const bool isLeft = items[i].middle[axis] < plane;
            left += isLeft ? 1U : 0U;
            right -= isLeft ? 0U : 1U;
        }
        const std::uint32_t smaller = std::min(left - begin, end - left);
        const bool isBalanced = smaller >= smallestHalf && depth < depthOfSpatialSplits;
        if (!isBalanced)
        {
            left = begin + (end - begin) / 2;
            std::nth_element(spare + begin, spare + left, spare + end,
                             [axis](const Item& a, const Item& b) {
                                 return a.middle[axis] != b.middle[axis]
                                            ? a.middle[axis] < b.middle[axis]
                                            : a.cell < b.cell;
                             });
        }
        return {{begin, left, !range.isSpare}, {left, end, !range.isSpare}};
    }

    /// Writes the cells of a range in ascending order.
    void takeCells(const Range& range, std::span<std::uint32_t> cells)
    {
        assert(cells.size() == range.size());
        const std::span items(itemsOf(range.isSpare) + range.begin, range.size());
        std::ranges::transform(items, cells.begin(), &Item::cell);
        std::ranges::sort(cells);
    }

private:
    /// One thread handles fewer cells than this in well under a millisecond, about what waking up the
    /// others would take.
    static constexpr std::size_t manyCells = 4096;

    /// A division in the middle of space must leave at least this many cells on both sides, or else it
    /// takes the median. Dividing off one or two cells at a time would fill nodes with tiny leaves.
    static constexpr std::uint32_t smallestHalf = 3;

    /// Above this depth cells are divided in the middle of space, below it at the median. Since there
    /// are fewer than 2^32 cells, the median ends the recursion within 32 more levels, and the depth is
    /// at most 60 + 32 and a few, below `CellTree::maximumDepth`.
    static constexpr int depthOfSpatialSplits = 60;

    /// A cell and the middle of its box.
    struct Item
    {
        std::array<float, D> middle;
        std::uint32_t cell;
    };

    Item* itemsOf(bool isSpare) { return isSpare ? mSpareItems.data() : mItems.data(); }

    /// The axis along which most cells lie side by side: the extent of the range in units of the mean
    /// extent of a few of its cells.
    std::size_t longestAxis(const FloatBox<D>& middles, const Item* items, std::uint32_t begin,
                            std::uint32_t end) const
    {
        constexpr std::uint64_t samples = 4;
        std::array<float, D> size;
        size.fill(std::numeric_limits<float>::min());
        for (std::uint64_t i = 0; i < samples; ++i)
        {
            const auto place = static_cast<std::uint32_t>(begin + std::uint64_t{end - begin} *
                                                                      (2 * i + 1) / (2 * samples));
            const FloatBox<D>& box = mBoxes[items[place].cell];
            for (std::size_t axis = 0; axis < D; ++axis)
                size[axis] += box.upper[axis] - box.lower[axis];
        }
        std::size_t longest = 0;
        for (std::size_t axis = 1; axis < D; ++axis)
            if ((middles.upper[axis] - middles.lower[axis]) * size[longest] >
                (middles.upper[longest] - middles.lower[longest]) * size[axis])
                longest = axis;
        return longest;
    }

    /// Indexed by cell.
    LargeVector<FloatBox<D>> mBoxes;
    LargeVector<Item> mItems;
    LargeVector<Item> mSpareItems;
};

}
