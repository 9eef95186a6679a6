#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/value/Tensor.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace tavrin
{

/// A box of positions of a lattice, by ranges of indices along each axis. Positions are numbered in it
/// fastest along the first axis.
struct LatticeBlock
{
    std::array<std::uint32_t, 3> first{};
    std::array<std::uint32_t, 3> end{1, 1, 1};

    std::size_t length(std::size_t axis) const
    {
        return end[axis] > first[axis] ? end[axis] - first[axis] : 0;
    }
    std::size_t size() const { return length(0) * length(1) * length(2); }

    /// Calls `visit(number, numberInPart, count)` for each run of consecutive positions of this block that
    /// are in `part` and have the numbers from ... to - 1.
    template<typename Visit>
    void forEachRun(const LatticeBlock& part, std::size_t from, std::size_t to,
                    const Visit& visit) const
    {
        if (from >= to || part.size() == 0)
            return;
        const std::size_t layer = length(0) * length(1);
        const std::size_t lastLayer =
            std::min<std::size_t>(part.end[2] - 1, first[2] + (to - 1) / layer);
        std::size_t k = std::max<std::size_t>(part.first[2], first[2] + from / layer);
        for (; k <= lastLayer; ++k)
            for (std::size_t j = part.first[1]; j < part.end[1]; ++j)
            {
                const std::size_t start = (k - first[2]) * layer + (j - first[1]) * length(0) +
                                          (part.first[0] - first[0]);
                const std::size_t partStart =
                    ((k - part.first[2]) * part.length(1) + (j - part.first[1])) * part.length(0);
                const std::size_t runStart = std::max(from, start);
                const std::size_t runEnd = std::min(to, start + part.length(0));
                if (runStart < runEnd)
                    visit(runStart, partStart + (runStart - start), runEnd - runStart);
            }
    }

    /// Divides this into blocks of at most `atMost` planes along each axis, and calls `visit` for each.
    template<typename Visit>
    void forEachPart(std::uint32_t atMost, const Visit& visit) const
    {
        LatticeBlock part;
        const auto setEnd = [&](std::size_t axis)
        { part.end[axis] = part.first[axis] + std::min(atMost, end[axis] - part.first[axis]); };
        auto& [i, j, k] = part.first;
        for (k = first[2]; k < end[2]; k = part.end[2])
        {
            setEnd(2);
            for (j = first[1]; j < end[1]; j = part.end[1])
            {
                setEnd(1);
                for (i = first[0]; i < end[0]; i = part.end[0])
                {
                    setEnd(0);
                    visit(std::as_const(part));
                }
            }
        }
    }
};

/// Positions at the intersections of planes at right angles to the coordinate axes. The planes of an axis,
/// fewer than 2^32, are given by their coordinates in ascending order. Positions are numbered fastest along
/// the first axis.
template<std::size_t D>
struct Lattice
{
    std::array<std::span<const double>, D> planes;

    std::size_t length(std::size_t axis) const { return axis < D ? planes[axis].size() : 1; }
    std::size_t size() const { return length(0) * length(1) * length(2); }
    std::size_t number(const std::array<std::size_t, 3>& indices) const
    {
        return (indices[2] * length(1) + indices[1]) * length(0) + indices[0];
    }

    std::array<std::size_t, 3> indices(std::size_t number) const
    {
        const std::size_t row = number / length(0);
        return {number % length(0), row % length(1), row / length(1)};
    }

    Tensor<double, D> position(const std::array<std::size_t, 3>& indices) const
    {
        Tensor<double, D> result;
        for (std::size_t axis = 0; axis < D; ++axis)
            result[axis] = planes[axis][indices[axis]];
        return result;
    }

    /// The block of positions in a box; it may be empty.
    LatticeBlock within(const Box<D>& box) const
    {
        LatticeBlock block;
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            const auto below = std::ranges::lower_bound(planes[axis], box.lower[axis]);
            const auto upTo = std::ranges::upper_bound(planes[axis], box.upper[axis]);
            block.first[axis] = static_cast<std::uint32_t>(below - planes[axis].begin());
            block.end[axis] = static_cast<std::uint32_t>(upTo - planes[axis].begin());
        }
        return block;
    }

    LatticeBlock whole() const { return within(Box<D>::everything()); }

    /// All positions.
    std::vector<Tensor<double, D>> positions() const
    {
        std::vector<Tensor<double, D>> result;
        result.reserve(size());
        for (std::size_t k = 0; k < length(2); ++k)
            for (std::size_t j = 0; j < length(1); ++j)
                for (std::size_t i = 0; i < length(0); ++i)
                    result.push_back(position({i, j, k}));
        return result;
    }

    /// A block as a lattice of its own.
    Lattice part(const LatticeBlock& block) const
    {
        Lattice result;
        for (std::size_t axis = 0; axis < D; ++axis)
            result.planes[axis] = planes[axis].subspan(block.first[axis], block.length(axis));
        return result;
    }

    /// The positions first ... last - 1 as blocks of at most `atMost` positions, compact ones where that is
    /// possible.
    std::vector<LatticeBlock> blocksOf(std::size_t first, std::size_t last,
                                       std::size_t atMost) const
    {
        std::vector<LatticeBlock> blocks;
        while (first < last)
        {
            const LatticeBlock block = largestBlock(first, last - first);
            divide(block, atMost, blocks);
            first += block.size();
        }
        return blocks;
    }

private:
    /// The largest block of consecutive numbers from `first` on that has at most `atMost` positions.
    LatticeBlock largestBlock(std::size_t first, std::size_t atMost) const
    {
        LatticeBlock block;
        bool isWhole = true;
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            const std::size_t index = first % length(axis);
            const std::size_t count = isWhole ? std::min(length(axis) - index, atMost) : 1;
            block.first[axis] = static_cast<std::uint32_t>(index);
            block.end[axis] = static_cast<std::uint32_t>(index + count);
            isWhole = isWhole && count == length(axis);
            first /= length(axis);
            atMost /= count;
        }
        return block;
    }

    static void divide(const LatticeBlock& block, std::size_t atMost,
                       std::vector<LatticeBlock>& blocks)
    {
        if (block.size() <= atMost)
        {
            blocks.push_back(block);
            return;
        }
        std::size_t longest = 0;
        for (std::size_t axis = 1; axis < 3; ++axis)
            if (block.length(axis) > block.length(longest))
                longest = axis;
        LatticeBlock lower = block;
        LatticeBlock upper = block;
        const auto middle =
            block.first[longest] + static_cast<std::uint32_t>(block.length(longest) / 2);
        lower.end[longest] = middle;
        upper.first[longest] = middle;
        divide(lower, atMost, blocks);
        divide(upper, atMost, blocks);
    }
};

/// The lattice of planes, which must outlive it.
template<std::size_t D>
Lattice<D> latticeOf(const std::array<std::vector<double>, D>& planes)
{
    Lattice<D> lattice;
    std::ranges::copy(planes, lattice.planes.begin());
    return lattice;
}

}
