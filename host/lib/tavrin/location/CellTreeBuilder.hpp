#pragma once

#include <tavrin/location/CellGeometry.hpp>
#include <tavrin/location/CellSorter.hpp>
#include <tavrin/location/CellTree.hpp>

#include <new>
#include <vector>

namespace tavrin
{

/// Builds a tree from the top down.
template<std::size_t D>
class CellTreeBuilder
{
public:
    CellTreeBuilder(CellTree<D>& tree, const GridCells<D>& cells)
        : mTree(tree), mGridCells(cells),
          mSorter(cells.size(), [&](std::size_t cell) { return boxOf(cell); })
    {
    }

    void build()
    {
        const Range all = mSorter.all();
        const std::uint32_t count = all.size();
        if (count == 0)
            return;
        mTree.mCells = LargeVector<std::uint32_t>(count);
        // `CellFilter` and the users of `Leaf` read beyond the end of the last row.
        static_assert(CellFilter<D>::overread <= Tree::leafCapacity);
        mTree.mFilters = LargeVector<float>(count * mTree.mFilter.size() + Tree::leafCapacity);
        std::ranges::fill(std::span(mTree.mFilters).last(Tree::leafCapacity), 0.0F);
        Branch root;
#pragma omp parallel if (count >= cellsPerBranch)
#pragma omp single
        growSafely(root, all, 0);
        if (mIsOutOfMemory)
            throw std::bad_alloc();
        std::vector<Branch*> branches;
        const std::uint32_t nodes = number(root, 0, branches);
        mTree.mNodes = LargeVector<Node>(nodes);
#pragma omp parallel for schedule(dynamic) if (branches.size() > 1)
        for (std::size_t i = 0; i < branches.size(); ++i)
            store(*branches[i]);
    }

private:
    /// Branches with fewer cells are built by one task. That takes about a millisecond, far more than starting
    /// the task, and leaves dozens of tasks to share out in a grid whose build takes a noticeable time.
    static constexpr std::uint32_t cellsPerBranch = 4096;

    using Tree = CellTree<D>;
    using Node = typename Tree::Node;
    using Vertices = typename GridCells<D>::Vertices;
    using Position = typename Tree::Position;
    using Range = typename CellSorter<D>::Range;

    /// What a node stores about a child.
    struct Part
    {
        FloatBox<D> box = FloatBox<D>::empty();
        std::uint32_t link = 0;
        /// The number of cells of a leaf; 0 for a node.
        std::uint32_t count = 0;
    };

    /// A part of the tree that one task builds: a single node with branches below it, or a subtree whose
    /// root is the first of its nodes.
    struct Branch
    {
        std::vector<Node> nodes;
        std::vector<Branch> below;
        Part whole;
        std::uint32_t firstNode = 0;
    };

    /// The mapped box of a cell; NaN for a cell that is left out.
    FloatBox<D> boxOf(std::size_t cell) const
    {
        FloatBox<D> box;
        box.lower.fill(std::numeric_limits<float>::quiet_NaN());
        Vertices vertices;
        mGridCells.gather(cell, vertices);
        if (vertices.type == CellType::Invalid)
            return box;
        const Box<D> bounds =
            CellGeometry<D>(vertices.type, vertices.positions.data(), mGridCells.rounding())
                .bounds();
        for (std::size_t i = 0; i < D; ++i)
        {
            box.lower[i] = mTree.mSpace.map(i, bounds.lower[i]);
            box.upper[i] = mTree.mSpace.map(i, bounds.upper[i]);
        }
        return box;
    }

    /// No exception may leave a task.
    void growSafely(Branch& branch, const Range& range, int depth) noexcept
    {
        try
        {
            grow(branch, range, depth);
        }
        catch (const std::bad_alloc&)
        {
#pragma omp atomic write
            mIsOutOfMemory = true;
        }
    }

    void grow(Branch& branch, const Range& range, int depth)
    {
        if (range.size() < cellsPerBranch)
        {
            branch.nodes.reserve(range.size() / 8 + 1);
            branch.whole = buildNode(branch.nodes, range, depth);
            return;
        }
        Ranges children;
        const std::size_t numChildren = divide(range, depth, children);
        branch.below.resize(numChildren);
        for (std::size_t i = 0; i < numChildren; ++i)
        {
            Branch* const child = &branch.below[i];
            const Range childRange = children[i];
#pragma omp task firstprivate(child, childRange, depth)
            growSafely(*child, childRange, depth + 2);
        }
#pragma omp taskwait
        branch.nodes.resize(1);
        Parts parts;
        std::ranges::transform(branch.below, parts.begin(),
                               [](const Branch& child) { return child.whole; });
        branch.whole = join(branch.nodes.front(), parts, numChildren);
    }

    /// Assigns the branch and those below it their positions in the array of nodes, from `first` on.
    /// Returns the position after the last.
    static std::uint32_t number(Branch& branch, std::uint32_t first, std::vector<Branch*>& branches)
    {
        branches.push_back(&branch);
        branch.firstNode = first;
        first += static_cast<std::uint32_t>(branch.nodes.size());
        for (std::size_t i = 0; i < branch.below.size(); ++i)
        {
            branch.nodes.front().link[i] = first - branch.firstNode;
            first = number(branch.below[i], first, branches);
        }
        return first;
    }

    /// Copies the nodes of a branch to the tree. Links in the branch count from its own first node.
    void store(const Branch& branch)
    {
        Node* target = mTree.mNodes.data() + branch.firstNode;
        for (const Node& node : branch.nodes)
        {
            *target = node;
            for (std::size_t i = 0; i < Tree::maximumChildren; ++i)
                if (node.count[i] == 0)
                    target->link[i] += branch.firstNode;
            ++target;
        }
    }

    using Ranges = std::array<Range, Tree::maximumChildren>;
    using Parts = std::array<Part, Tree::maximumChildren>;

    /// Builds the node of a range and all below it, at the end of `nodes`.
    Part buildNode(std::vector<Node>& nodes, const Range& range, int depth)
    {
        const std::size_t place = nodes.size();
        nodes.emplace_back();
        Ranges children{range};
        const std::size_t numChildren =
            range.size() <= Tree::leafCapacity ? 1 : divide(range, depth, children);
        Parts parts;
        for (std::size_t i = 0; i < numChildren; ++i)
            parts[i] = children[i].size() <= Tree::leafCapacity
                           ? buildLeaf(children[i])
                           : buildNode(nodes, children[i], depth + 2);
        Part whole = join(nodes[place], parts, numChildren);
        whole.link = static_cast<std::uint32_t>(place);
        return whole;
    }

    static Part join(Node& node, const Parts& parts, std::size_t numParts)
    {
        Part whole;
        for (std::size_t i = 0; i < Tree::maximumChildren; ++i)
        {
            const Part part = i < numParts ? parts[i] : Part();
            for (std::size_t axis = 0; axis < D; ++axis)
            {
                node.lower[axis][i] = part.box.lower[axis];
                node.upper[axis][i] = part.box.upper[axis];
            }
            node.link[i] = part.link;
            node.count[i] = part.count;
            whole.box.add(part.box);
        }
        return whole;
    }

    /// Divides a range of more cells than fit into a leaf into up to four, always the largest one next.
    std::size_t divide(const Range& range, int depth, Ranges& children)
    {
        children[0] = range;
        std::size_t count = 1;
        while (count < Tree::maximumChildren)
        {
            const auto largest = std::ranges::max_element(
                children.begin(), children.begin() + count, {}, &Range::size);
            if (largest->size() <= Tree::leafCapacity)
                break;
            const auto [left, right] = mSorter.halve(*largest, depth + (count > 1 ? 1 : 0));
            *largest = left;
            children[count++] = right;
        }
        return count;
    }

    Part buildLeaf(const Range& range)
    {
        Part part;
        part.link = range.begin;
        part.count = range.size();
        const std::span cells(mTree.mCells.data() + range.begin, range.size());
        mSorter.takeCells(range, cells);
        for (const std::uint32_t cell : cells)
            part.box.add(mSorter.box(cell));
        writeFilters(part);
        return part;
    }

    void writeFilters(const Part& leaf)
    {
        float* const numbers =
            mTree.mFilters.data() + std::size_t{leaf.link} * mTree.mFilter.size();
        Position origin;
        for (std::size_t i = 0; i < D; ++i)
            origin[i] = Tree::middle(leaf.box.lower[i], leaf.box.upper[i]);
        for (std::uint32_t n = 0; n < leaf.count; ++n)
        {
            const std::uint32_t cell = mTree.mCells[leaf.link + n];
            if (mTree.mFilter.areSimplices())
                writeSimplex(cell, origin, numbers + n, leaf.count);
            else
                CellFilter<D>::writeBox(mSorter.box(cell).lower, mSorter.box(cell).upper,
                                        numbers + n, leaf.count);
        }
    }

    void writeSimplex(std::uint32_t cell, const Position& origin, float* numbers, std::size_t row)
    {
        Vertices vertices;
        mGridCells.gather(cell, vertices);
        std::array<Position, D + 1> local;
        for (std::size_t k = 0; k <= D; ++k)
        {
            const auto mapped = mTree.mSpace.map(vertices.positions[k]);
            for (std::size_t i = 0; i < D; ++i)
                local[k][i] = mapped.exact[i] - origin[i];
        }
        CellFilter<D>::writeSimplex(local.data(), numbers, row);
    }

    CellTree<D>& mTree;
    const GridCells<D>& mGridCells;
    CellSorter<D> mSorter;
    bool mIsOutOfMemory = false;
};

}
