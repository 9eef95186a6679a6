#pragma once

#include <tavrin/field/CellGeometry.hpp>
#include <tavrin/field/GridCells.hpp>

#include <bit>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tavrin
{

/// A hierarchy of boxes over the cells of a grid. Each node has up to four children and their boxes
/// side by side, so that all four are compared at once. Nodes are split in space, as in a bounding
/// interval hierarchy [1], but with full boxes: the boxes of neighbours overlap a little, and a
/// position leads into few of them.
///
/// A leaf has up to eight cells in ascending order, and packed side by side what rules out most of
/// them without a look at their vertices: their boxes or, where all cells are simplices with as many
/// dimensions as the space, the linear functions that give the position's weights. Boxes and
/// functions are in single precision, and err to the side of a cell too many.
///
/// [1] C. Garth, K. I. Joy, Fast, memory-efficient cell location in unstructured grids for
///     visualization, IEEE Trans. Vis. Comput. Graph. 16 (2010)
template<std::size_t D>
class CellTree
{
public:
    using Position = Tensor<double, D>;

    /// Built on all threads; the tree does not depend on their number. `rounding` is that of
    /// `CellGeometry`. Cells with vertices that are not finite, and those of type `Invalid`, are left
    /// out.
    CellTree(const GridCells<D>& cells, double rounding);

    static constexpr std::uint32_t nothing = 0xffffffff;

    /// The lowest cell for which `contains(cell)` is true, or `nothing`. Cells whose bounds do not
    /// hold the position count as false; not all others are asked.
    template<typename Contains>
    std::uint32_t search(const Position& position, const Contains& contains) const;

    std::size_t memory() const
    {
        return mNodes.size() * sizeof(Node) + mCells.size() * sizeof(std::uint32_t) +
               mFilter.size() * sizeof(float);
    }

private:
    template<std::size_t>
    friend class TreeBuilder;

    static constexpr std::uint32_t leafCapacity = 8;
    static constexpr std::size_t maximumChildren = 4;
    /// As deep as the builder goes.
    static constexpr std::size_t maximumDepth = 96;

    struct Node
    {
        /// Of each child; a child that is missing has an empty box.
        std::array<std::array<float, maximumChildren>, D> lower;
        std::array<std::array<float, maximumChildren>, D> upper;
        /// The node, or the place of the first cell where the child is a leaf.
        std::array<std::uint32_t, maximumChildren> link;
        /// The lowest cell of the child, rounded down to a multiple of 16, plus the number of cells
        /// where the child is a leaf.
        std::array<std::uint32_t, maximumChildren> lowestAndCount;

        std::uint32_t lowest(std::size_t child) const { return lowestAndCount[child] & ~15U; }
        std::uint32_t count(std::size_t child) const { return lowestAndCount[child] & 15U; }
    };

    /// A position in units of about half the grid, around its middle.
    struct Mapped
    {
        std::array<double, D> exact;
        std::array<float, D> rounded;
    };
    Mapped map(const Position& position) const
    {
        // Rounding keeps the order of numbers: what is inside a box is inside its mapped box.
        Mapped mapped;
        for (std::size_t i = 0; i < D; ++i)
        {
            mapped.exact[i] = (position[i] - mOrigin[i]) * mUnit;
            mapped.rounded[i] = static_cast<float>(mapped.exact[i]);
        }
        return mapped;
    }

    /// The middle of a box in mapped coordinates, from where the filter of a leaf is computed.
    static double middle(float lower, float upper)
    {
        return 0.5 * (static_cast<double>(lower) + static_cast<double>(upper));
    }

    /// How far the weights of a simplex may lie outside in single precision.
    static constexpr float simplexMargin = 0x1p-8F;

    /// One bit for each child of a node that may contain the position.
    static std::uint32_t childrenAt(const Node& node, const Mapped& at);

    /// One bit for each cell of a leaf, a child of `parent`, that may contain the position.
    std::uint32_t cellsAt(const Node& parent, std::size_t child, const Mapped& at) const;

    std::size_t filterSize() const { return mAreSimplices ? D * (D + 1) : 2 * D; }

    Position mOrigin{};
    double mUnit = 1.0;
    bool mAreSimplices = false;
    /// The first is the root.
    LargeVector<Node> mNodes;
    LargeVector<std::uint32_t> mCells;
    /// Leaf after leaf, each with one row per number of the filter.
    LargeVector<float> mFilter;
};

namespace detail
{

/// Four neighbouring numbers, and four answers that are all or no bits.
using Quad = float __attribute__((vector_size(16)));
using QuadMask = std::int32_t __attribute__((vector_size(16)));

inline Quad loadQuad(const float* numbers)
{
    Quad quad;
    __builtin_memcpy(&quad, numbers, sizeof(quad));
    return quad;
}

inline std::uint32_t bitsOf(QuadMask mask)
{
#ifdef __SSE2__
    return static_cast<std::uint32_t>(_mm_movemask_ps(std::bit_cast<__m128>(mask)));
#else
    return (mask[0] & 1U) | (mask[1] & 2U) | (mask[2] & 4U) | (mask[3] & 8U);
#endif
}

}

template<std::size_t D>
inline std::uint32_t CellTree<D>::childrenAt(const Node& node, const Mapped& at)
{
    detail::QuadMask mask{-1, -1, -1, -1};
    for (std::size_t i = 0; i < D; ++i)
        mask &= (detail::loadQuad(node.lower[i].data()) <= at.rounded[i]) &
                (detail::loadQuad(node.upper[i].data()) >= at.rounded[i]);
    return detail::bitsOf(mask);
}

template<std::size_t D>
inline std::uint32_t CellTree<D>::cellsAt(const Node& parent, std::size_t child,
                                          const Mapped& at) const
{
    const std::uint32_t count = parent.count(child);
    const float* const rows = mFilter.data() + parent.link[child] * filterSize();
    std::uint32_t bits = 0;
    if (mAreSimplices)
    {
        std::array<float, D> local;
        for (std::size_t i = 0; i < D; ++i)
            local[i] = static_cast<float>(at.exact[i] -
                                          middle(parent.lower[i][child], parent.upper[i][child]));
        for (std::uint32_t lane = 0; lane < count; lane += 4)
        {
            const float* row = rows + lane;
            detail::QuadMask mask{-1, -1, -1, -1};
            detail::Quad sum{};
            for (std::size_t i = 0; i < D; ++i)
            {
                detail::Quad weight = detail::loadQuad(row);
                row += count;
                for (std::size_t j = 0; j < D; ++j)
                {
                    weight += local[j] * detail::loadQuad(row);
                    row += count;
                }
                mask &= weight >= -simplexMargin;
                sum += weight;
            }
            mask &= sum <= 1.0F + simplexMargin;
            bits |= detail::bitsOf(mask) << lane;
        }
    }
    else
        for (std::uint32_t lane = 0; lane < count; lane += 4)
        {
            const float* row = rows + lane;
            detail::QuadMask mask{-1, -1, -1, -1};
            for (std::size_t i = 0; i < D; ++i, row += std::size_t{2} * count)
                mask &= (detail::loadQuad(row) <= at.rounded[i]) &
                        (detail::loadQuad(row + count) >= at.rounded[i]);
            bits |= detail::bitsOf(mask) << lane;
        }
    return bits & ((1U << count) - 1);
}

template<std::size_t D>
template<typename Contains>
std::uint32_t CellTree<D>::search(const Position& position, const Contains& contains) const
{
    std::uint32_t lowestFound = nothing;
    if (mNodes.empty())
        return lowestFound;
    const Mapped at = map(position);

    // Nodes to look at, and which of their children.
    struct Visit
    {
        const Node* node;
        std::uint32_t children;
    };
    std::array<Visit, maximumDepth> visits;
    std::size_t numVisits = 0;
    Visit now{mNodes.data(), childrenAt(mNodes.front(), at)};
    while (true)
    {
        if (now.children == 0)
        {
            if (numVisits == 0)
                return lowestFound;
            now = visits[--numVisits];
            continue;
        }
        const Node& node = *now.node;
        const auto child = static_cast<std::size_t>(std::countr_zero(now.children));
        now.children &= now.children - 1;
        if (node.lowest(child) >= lowestFound)
            continue;
        const std::uint32_t first = node.link[child];
        if (node.count(child) == 0)
        {
            if (now.children != 0)
                visits[numVisits++] = now;
            now = {&mNodes[first], childrenAt(mNodes[first], at)};
            continue;
        }
        for (std::uint32_t bits = cellsAt(node, child, at); bits != 0; bits &= bits - 1)
        {
            const std::uint32_t cell =
                mCells[first + static_cast<std::uint32_t>(std::countr_zero(bits))];
            if (cell >= lowestFound)
                break;
            if (contains(cell))
            {
                lowestFound = cell;
                break;
            }
        }
    }
}

extern template class CellTree<1>;
extern template class CellTree<2>;
extern template class CellTree<3>;

}
