#pragma once

#include <tavrin/base/prefetch.hpp>
#include <tavrin/location/CellFilter.hpp>
#include <tavrin/location/GridCells.hpp>
#include <tavrin/location/PositionPacket.hpp>
#include <tavrin/location/TreeSpace.hpp>

#include <algorithm>
#include <cassert>
#include <utility>
#include <vector>

namespace tavrin
{

/// A hierarchy of boxes over the cells of a grid. Each node holds the boxes of up to four children side
/// by side, so that all four are compared at once. Nodes divide space, as in a bounding interval
/// hierarchy [1], but store full boxes: neighboring boxes overlap only a little, and a position lies in
/// few of them. Boxes are in single precision, rounded so that they and the filters of the cells never
/// rule out a cell that contains a position.
///
/// [1] C. Garth, K. I. Joy, Fast, memory-efficient cell location in unstructured grids for
///     visualization, IEEE Trans. Vis. Comput. Graph. 16 (2010)
template<std::size_t D>
class CellTree
{
public:
    using Position = Tensor<double, D>;

    /// Builds the tree on all threads; the tree does not depend on their number. Cells with vertices
    /// that are not finite, and those of type `Invalid`, are left out. Throws `std::bad_alloc`.
    explicit CellTree(const GridCells<D>& cells);

    /// The largest number of positions that are searched for together.
    static constexpr std::size_t packetSize = PositionPacket<D>::capacity;

    /// Calls `candidate(k, cell)` for every position k and cell that contains it, and for few others, in
    /// any order. Takes at most `packetSize` positions, and is faster the closer together they lie.
    template<typename Candidate>
    void search(std::span<const Position> positions, const Candidate& candidate) const;

    /// Calls `candidate(cell)` for every cell whose box is no farther from the position than `limit()`, and for
    /// few others; nearer parts of the tree come first. `limit` is called again after each
    /// candidate, which may have lowered it. Only for a tree that keeps boxes.
    template<typename Limit, typename Candidate>
    void searchAround(const Position& position, const Limit& limit,
                      const Candidate& candidate) const;

    /// Two comparisons of four cells each. Smaller leaves take more nodes and memory than they save
    /// tests, larger ones more tests.
    static constexpr std::uint32_t leafCapacity = 8;

    /// A few neighboring cells and their filters.
    class Leaf
    {
    public:
        std::span<const std::uint32_t> cells() const { return {mCells, mCount}; }

        /// The bounds of the boxes of the cells along an axis, in mapped coordinates, where the tree
        /// keeps boxes. `leafCapacity` numbers can be read; those beyond the last cell are arbitrary.
        const float* lower(std::size_t axis) const
        {
            return mFilters + CellFilter<D>::lowerRow(axis) * mCount;
        }
        const float* upper(std::size_t axis) const
        {
            return mFilters + CellFilter<D>::upperRow(axis) * mCount;
        }

        /// Prefetches the leaf.
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

    /// Whether the tree keeps boxes of its cells, and not the tighter filters of simplices.
    bool hasBoxes() const { return !mFilter.areSimplices(); }

    /// Finds the leaves that intersect a box in mapped coordinates. Returns false if they have more than
    /// `maximumCells` cells; then not all of them are found.
    bool findLeaves(const std::array<float, D>& lower, const std::array<float, D>& upper,
                    std::size_t maximumCells, std::vector<Leaf>& leaves) const;

    /// The coordinates of boxes in the tree.
    const TreeSpace<D>& space() const { return mSpace; }

    /// A box that holds all cells, tolerance included.
    Box<D> bounds() const;

    std::size_t memory() const
    {
        return mNodes.size() * sizeof(Node) + mCells.size() * sizeof(std::uint32_t) +
               mFilters.size() * sizeof(float);
    }

private:
    template<std::size_t>
    friend class CellTreeBuilder;

    using Node = CellTreeNode<D>;
    using Packet = PositionPacket<D>;

    static constexpr std::size_t maximumChildren = Node::maximumChildren;
    /// The depth that the builder does not exceed, see `CellSorter`.
    static constexpr std::size_t maximumDepth = 96;

    /// The middle of the box of a leaf along an axis: the origin of its filters of simplices.
    static double middle(float lower, float upper)
    {
        return 0.5 * (static_cast<double>(lower) + static_cast<double>(upper));
    }

    /// A leaf, given as the child of a node, and the positions inside its box, one bit each.
    struct LeafVisit
    {
        const Node* parent;
        std::uint32_t child;
        std::uint32_t positions;
    };
    template<typename Candidate>
    void searchLeaf(const LeafVisit& visit, const Packet& packet, const Candidate& candidate) const;

    /// The square of a distance from a box in mapped coordinates, or less by their rounding.
    template<typename BoundAlong>
    static double squaredDistance(const std::array<double, D>& position, const BoundAlong& bounds)
    {
        constexpr double rounding = std::numeric_limits<float>::epsilon();
        double sum = 0.0;
        for (std::size_t i = 0; i < D; ++i)
        {
            const auto [lower, upper] = bounds(i);
            const double below = lower - rounding * std::abs(lower) - position[i];
            const double above = position[i] - upper - rounding * std::abs(upper);
            const double gap = std::max({below, above, 0.0});
            sum += gap * gap;
        }
        return sum;
    }

    const float* filtersFrom(std::uint32_t place) const
    {
        return mFilters.data() + std::size_t{place} * mFilter.size();
    }

    TreeSpace<D> mSpace;
    CellFilter<D> mFilter;
    /// The first node is the root.
    LargeVector<Node> mNodes;
    LargeVector<std::uint32_t> mCells;
    /// The filters of one leaf after the other, each with one row per number.
    LargeVector<float> mFilters;
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
    if (mNodes.empty() || positions.empty())
        return;
    const Packet packet(mSpace, positions);

    // Nodes to visit, and the positions that may be inside.
    struct Visit
    {
        const Node* node;
        std::uint32_t positions;
    };
    std::array<Visit, maximumDepth*(maximumChildren - 1) + 1> visits;
    // Leaves are visited some time after they were found, when the memory has delivered them.
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

template<std::size_t D>
template<typename Limit, typename Candidate>
void CellTree<D>::searchAround(const Position& position, const Limit& limit,
                               const Candidate& candidate) const
{
    assert(hasBoxes());
    struct Visit
    {
        double squaredDistance;
        std::uint32_t link;
        /// The number of cells of a leaf; 0 for an inner node.
        std::uint32_t count;
    };
    using Bounds = std::pair<double, double>;
    const std::array<double, D> mapped = mSpace.map(position).exact;
    const auto isNear = [&](double squaredDistance)
    {
        const double mappedLimit = limit() * mSpace.unit();
        return squaredDistance <= mappedLimit * mappedLimit;
    };
    std::array<Visit, maximumDepth*(maximumChildren - 1) + 1> visits;
    std::size_t numVisits = mNodes.empty() ? 0 : 1;
    visits.front() = {0.0, 0, 0};
    while (numVisits > 0)
    {
        const Visit visit = visits[--numVisits];
        if (!isNear(visit.squaredDistance))
            continue;
        if (visit.count > 0)
        {
            const float* const filters = filtersFrom(visit.link);
            for (std::uint32_t cell = 0; cell < visit.count; ++cell)
            {
                const auto boxAlong = [&](std::size_t axis) -> Bounds
                {
                    return {filters[CellFilter<D>::lowerRow(axis) * visit.count + cell],
                            filters[CellFilter<D>::upperRow(axis) * visit.count + cell]};
                };
                if (isNear(squaredDistance(mapped, boxAlong)))
                    candidate(mCells[visit.link + cell]);
            }
            continue;
        }
        const Node& node = mNodes[visit.link];
        const std::size_t first = numVisits;
        for (std::size_t child = 0; child < maximumChildren; ++child)
        {
            const auto boxAlong = [&](std::size_t axis) -> Bounds {
                return {node.lower[axis][child], node.upper[axis][child]};
            };
            const double distance = squaredDistance(mapped, boxAlong);
            const bool isMissing = node.lower[0][child] > node.upper[0][child];
            if (!isMissing && isNear(distance))
                visits[numVisits++] = {distance, node.link[child], node.count[child]};
        }
        // The nearest is visited first.
        std::sort(visits.begin() + first, visits.begin() + numVisits,
                  [](const Visit& a, const Visit& b)
                  { return a.squaredDistance > b.squaredDistance; });
    }
}

extern template class CellTree<1>;
extern template class CellTree<2>;
extern template class CellTree<3>;

}
