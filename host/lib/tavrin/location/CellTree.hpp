#pragma once

#include <tavrin/base/prefetch.hpp>
#include <tavrin/location/CellFilter.hpp>
#include <tavrin/location/GridCells.hpp>

#include <limits>

namespace tavrin
{

/// A hierarchy of boxes over the cells of a grid. Each node has up to four children and their boxes
/// side by side, so that all four are compared at once. Nodes are split in space, as in a bounding
/// interval hierarchy [1], but with full boxes: the boxes of neighbors overlap a little, and a
/// position leads into few of them. Boxes are in single precision; they and the filter of the cells
/// err to the side of a cell too many.
///
/// [1] C. Garth, K. I. Joy, Fast, memory-efficient cell location in unstructured grids for
///     visualization, IEEE Trans. Vis. Comput. Graph. 16 (2010)
template<std::size_t D>
class CellTree
{
public:
    using Position = Tensor<double, D>;

    /// Built on all threads; the tree does not depend on their number. Cells with vertices that are
    /// not finite, and those of type `Invalid`, are left out.
    explicit CellTree(const GridCells<D>& cells);

    /// So many positions are searched for together.
    static constexpr std::size_t packetSize = 32;

    /// Calls `candidate(k, cell)` at least for every position k and cell whose bounds hold it, and for
    /// few others, in any order. At most `packetSize` positions; it is the faster the closer they lie
    /// together.
    template<typename Candidate>
    void search(std::span<const Position> positions, const Candidate& candidate) const;

    static constexpr std::uint32_t leafCapacity = 8;

    /// A few cells that are neighbors, and their filters.
    class Leaf
    {
    public:
        std::span<const std::uint32_t> cells() const { return {mCells, mCount}; }

        /// The sides of the boxes of the cells along an axis, in mapped coordinates, where the tree
        /// keeps boxes. There are `leafCapacity` numbers to be read, whatever they are.
        const float* lower(std::size_t axis) const
        {
            return mFilters + CellFilter<D>::lowerRow(axis) * mCount;
        }
        const float* upper(std::size_t axis) const
        {
            return mFilters + CellFilter<D>::upperRow(axis) * mCount;
        }

        /// Asks the memory for it.
        void fetch() const
        {
            prefetch(mCells, mCount * sizeof(std::uint32_t));
            prefetch(mFilters, mCount * 2 * D * sizeof(float));
        }

    private:
        friend class CellTree;

        const std::uint32_t* mCells;
        const float* mFilters;
        std::size_t mCount;
    };

    /// Whether it keeps boxes of its cells, not something better.
    bool hasBoxes() const { return !mFilter.areSimplices(); }

    /// Finds the leaves that meet a box in mapped coordinates. Returns false, and may not have found
    /// all, where they have more than so many cells.
    bool findLeaves(const std::array<float, D>& lower, const std::array<float, D>& upper,
                    std::size_t maximumCells, std::vector<Leaf>& leaves) const;

    /// A coordinate of a position around the middle of the grid, in units of about its size.
    /// Rounding keeps the order of numbers: what is inside a box is inside its mapped box.
    float map(std::size_t axis, double coordinate) const
    {
        // Wild coordinates go as far as single precision does; infinite ones go further.
        const double kept = std::clamp(mapExactly(axis, coordinate), -farthest, farthest);
        return static_cast<float>(std::isfinite(coordinate) ? kept : coordinate);
    }

    /// A box that holds the bounds of all cells.
    Box<D> bounds() const;

    std::size_t memory() const
    {
        return mNodes.size() * sizeof(Node) + mCells.size() * sizeof(std::uint32_t) +
               mFilters.size() * sizeof(float);
    }

private:
    template<std::size_t>
    friend class TreeBuilder;

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
        /// The number of cells where the child is a leaf, or 0.
        std::array<std::uint32_t, maximumChildren> count;
    };

    static constexpr double farthest = 1e37;

    struct Mapped
    {
        std::array<double, D> exact;
        std::array<float, D> rounded;
    };
    double mapExactly(std::size_t axis, double coordinate) const
    {
        return (coordinate - mOrigin[axis]) * mUnit;
    }
    Mapped map(const Position& position) const
    {
        Mapped mapped;
        for (std::size_t i = 0; i < D; ++i)
        {
            mapped.exact[i] = mapExactly(i, position[i]);
            mapped.rounded[i] = map(i, position[i]);
        }
        return mapped;
    }

    /// Positions that are searched for together.
    class Packet;

    /// The middle of a box in mapped coordinates, the origin of the simplices of a leaf.
    static double middle(float lower, float upper)
    {
        return 0.5 * (static_cast<double>(lower) + static_cast<double>(upper));
    }

    /// A leaf to look at, a child of a node, and the positions that are in its box.
    struct LeafVisit
    {
        const Node* parent;
        std::uint32_t child;
        std::uint32_t positions;
    };
    template<typename Candidate>
    void searchLeaf(const LeafVisit& visit, const Packet& packet, const Candidate& candidate) const;

    const float* filtersFrom(std::uint32_t place) const
    {
        return mFilters.data() + std::size_t{place} * mFilter.size();
    }

    Position mOrigin{};
    double mUnit = 1.0;
    CellFilter<D> mFilter;
    /// The first is the root.
    LargeVector<Node> mNodes;
    LargeVector<std::uint32_t> mCells;
    /// Of the cells of one leaf after the other, with one row per number.
    LargeVector<float> mFilters;
};

template<std::size_t D>
class CellTree<D>::Packet
{
public:
    Packet(const CellTree& tree, std::span<const Position> positions)
    {
        mLower.fill(std::numeric_limits<float>::infinity());
        mUpper.fill(-std::numeric_limits<float>::infinity());
        for (std::size_t k = 0; k < positions.size(); ++k)
        {
            mMapped[k] = tree.map(positions[k]);
            for (std::size_t i = 0; i < D; ++i)
            {
                const float x = mMapped[k].rounded[i];
                mCoordinates[i][k] = x;
                mLower[i] = std::min(mLower[i], x);
                mUpper[i] = std::max(mUpper[i], x);
            }
        }
        // Positions are compared four at a time.
        for (std::size_t k = positions.size(); k % 4 != 0; ++k)
            for (std::size_t i = 0; i < D; ++i)
                mCoordinates[i][k] = 0.0F;
        mAll = ~0U >> (packetSize - positions.size());
    }

    /// One bit for each position.
    std::uint32_t all() const { return mAll; }

    const Mapped& operator[](std::size_t k) const { return mMapped[k]; }

    /// One bit for each child of a node whose box meets that of the positions.
    std::uint32_t childrenAt(const Node& node) const
    {
        detail::FourIntegers mask{-1, -1, -1, -1};
        for (std::size_t i = 0; i < D; ++i)
            mask &= (detail::loadFour(node.lower[i].data()) <= mUpper[i]) &
                    (detail::loadFour(node.upper[i].data()) >= mLower[i]);
        return detail::bitsOf(mask);
    }

    /// One bit for each of some positions that is in the box of a child.
    std::uint32_t positionsIn(const Node& node, std::size_t child, std::uint32_t some) const
    {
        std::uint32_t bits = 0;
        for (std::uint32_t rest = some; rest != 0;)
        {
            // Four at a time.
            const auto k = static_cast<std::uint32_t>(std::countr_zero(rest)) & ~3U;
            rest &= ~(15U << k);
            detail::FourIntegers mask{-1, -1, -1, -1};
            for (std::size_t i = 0; i < D; ++i)
            {
                const detail::FourFloats x = detail::loadFour(mCoordinates[i].data() + k);
                mask &= (x >= node.lower[i][child]) & (x <= node.upper[i][child]);
            }
            bits |= detail::bitsOf(mask) << k;
        }
        return bits & some;
    }

private:
    std::array<Mapped, packetSize> mMapped;
    std::array<std::array<float, packetSize>, D> mCoordinates;
    std::array<float, D> mLower;
    std::array<float, D> mUpper;
    std::uint32_t mAll;
};

template<std::size_t D>
template<typename Candidate>
void CellTree<D>::searchLeaf(const LeafVisit& visit, const Packet& packet,
                             const Candidate& candidate) const
{
    const auto& [node, child, positions] = visit;
    const std::uint32_t count = node->count[child];
    const std::uint32_t first = node->link[child];
    const float* const filters = filtersFrom(first);
    for (std::uint32_t rest = positions; rest != 0; rest &= rest - 1)
    {
        const auto k = static_cast<std::size_t>(std::countr_zero(rest));
        std::uint32_t cells = 0;
        if (mFilter.areSimplices())
        {
            std::array<float, D> local;
            for (std::size_t i = 0; i < D; ++i)
                local[i] = static_cast<float>(packet[k].exact[i] -
                                              middle(node->lower[i][child], node->upper[i][child]));
            cells = CellFilter<D>::simplicesAt(local, filters, count);
        }
        else
            cells = CellFilter<D>::boxesAt(packet[k].rounded, filters, count);
        for (; cells != 0; cells &= cells - 1)
            candidate(k, mCells[first + static_cast<std::uint32_t>(std::countr_zero(cells))]);
    }
}

template<std::size_t D>
template<typename Candidate>
void CellTree<D>::search(std::span<const Position> positions, const Candidate& candidate) const
{
    static_assert(packetSize == 32);
    if (mNodes.empty() || positions.empty())
        return;
    const Packet packet(*this, positions);

    // Nodes to look at, and the positions that may be in them.
    struct Visit
    {
        const Node* node;
        std::uint32_t positions;
    };
    std::array<Visit, maximumDepth*(maximumChildren - 1) + 1> visits;
    // Leaves are looked at some time after they were found, when the memory has delivered them.
    std::array<LeafVisit, 16> leaves;
    std::size_t numLeaves = 0;
    const auto searchLeaves = [&]
    {
        for (const LeafVisit& visit : std::span(leaves).first(numLeaves))
            searchLeaf(visit, packet, candidate);
        numLeaves = 0;
    };
    visits.front() = {mNodes.data(), packet.all()};
    for (std::size_t numVisits = 1; numVisits > 0;)
    {
        const auto [node, inNode] = visits[--numVisits];
        for (std::uint32_t children = packet.childrenAt(*node); children != 0;
             children &= children - 1)
        {
            const auto child = static_cast<std::uint32_t>(std::countr_zero(children));
            const std::uint32_t inChild = packet.positionsIn(*node, child, inNode);
            if (inChild == 0)
                continue;
            const std::uint32_t link = node->link[child];
            if (node->count[child] == 0)
            {
                prefetch(&mNodes[link], sizeof(Node));
                visits[numVisits++] = {&mNodes[link], inChild};
                continue;
            }
            prefetch(&mCells[link], node->count[child] * sizeof(std::uint32_t));
            prefetch(filtersFrom(link), node->count[child] * mFilter.size() * sizeof(float));
            leaves[numLeaves++] = {node, child, inChild};
            if (numLeaves == leaves.size())
                searchLeaves();
        }
    }
    searchLeaves();
}

extern template class CellTree<1>;
extern template class CellTree<2>;
extern template class CellTree<3>;

}
