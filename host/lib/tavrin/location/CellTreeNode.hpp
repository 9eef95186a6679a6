#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavrin
{

/// A node of a `CellTree`: the boxes of up to four children side by side.
template<std::size_t D>
struct CellTreeNode
{
    static constexpr std::size_t maximumChildren = 4;

    /// The box of each child; a missing child has an empty one.
    std::array<std::array<float, maximumChildren>, D> lower;
    std::array<std::array<float, maximumChildren>, D> upper;
    /// The index of the child's node or, for a leaf, of its first cell in `mCells`.
    std::array<std::uint32_t, maximumChildren> link;
    /// The number of cells of a leaf; 0 for an inner node.
    std::array<std::uint32_t, maximumChildren> count;
};

}
