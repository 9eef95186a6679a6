#pragma once

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

/// A box of positions of a lattice, by their indices along each axis.
struct LatticeBlock
{
    std::array<std::uint32_t, 3> first{};
    std::array<std::uint32_t, 3> end{1, 1, 1};

    std::size_t length(std::size_t axis) const
    {
        return end[axis] > first[axis] ? end[axis] - first[axis] : 0;
    }
    std::size_t size() const { return length(0) * length(1) * length(2); }

    /// Calls `visit(part)` for blocks of at most so many planes of each axis, which together are this.
    template<typename Visit>
    void forEachPart(std::uint32_t atMost, const Visit& visit) const
    {
        LatticeBlock part;
        auto& [i, j, k] = part.first;
        for (k = first[2]; k < end[2]; k += atMost)
            for (j = first[1]; j < end[1]; j += atMost)
                for (i = first[0]; i < end[0]; i += atMost)
                {
                    for (std::size_t axis = 0; axis < 3; ++axis)
                        part.end[axis] = std::min(part.first[axis] + atMost, end[axis]);
                    visit(std::as_const(part));
                }
    }
};

/// Positions at the crossings of planes that stand on the axes of space. Those of an axis, fewer than
/// 2^32, are given by their coordinates in ascending order. Position numbers run fastest along the
/// first axis.
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

    Tensor<double, D> position(const std::array<std::size_t, 3>& indices) const
    {
        Tensor<double, D> result;
        for (std::size_t axis = 0; axis < D; ++axis)
            result[axis] = planes[axis][indices[axis]];
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

    /// Blocks of at most so many positions, compact ones where that is possible, which together are
    /// the positions first ... last - 1.
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
    /// The largest block of neighbouring numbers from `first` on, of at most so many positions.
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

}
