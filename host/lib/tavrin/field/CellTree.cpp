#include <tavrin/field/CellTree.hpp>

#include <tavrin/field/CellGeometry.hpp>
#include <tavrin/field/CellLocator.hpp>
#include <tavrin/field/Inverse.hpp>

#include <limits>
#include <new>

namespace tavrin
{

namespace
{

/// Fewer cells than this are the work of one thread.
constexpr std::uint32_t cellsPerBranch = 4096;

/// A split in the middle of space leaves at least so many cells on both sides.
constexpr std::uint32_t smallestHalf = 3;

/// Nodes are split in the middle of space; below this depth in the middle of their cells, which
/// bounds the depth.
constexpr int depthOfSpatialSplits = 60;

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

}

/// Builds a tree from the top down.
template<std::size_t D>
class TreeBuilder
{
public:
    TreeBuilder(CellTree<D>& tree, const GridCells<D>& cells) : mTree(tree), mGridCells(cells) {}

    void build()
    {
        measureCells();
        const auto count = static_cast<std::uint32_t>(mItems.size());
        if (count == 0)
            return;
        mSpareItems = LargeVector<Item>(count);
        mTree.mCells = LargeVector<std::uint32_t>(count);
        // Rows are read four numbers at a time, beyond the end of the last.
        mTree.mFilters = LargeVector<float>(count * mTree.mFilter.size() + Tree::leafCapacity);
        std::ranges::fill(std::span(mTree.mFilters).last(Tree::leafCapacity), 0.0F);
        Branch root;
#pragma omp parallel if (count >= cellsPerBranch)
#pragma omp single
        growSafely(root, {0, count, false}, 0);
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
    using Tree = CellTree<D>;
    using Node = typename Tree::Node;
    using Vertices = typename GridCells<D>::Vertices;
    using Position = typename Tree::Position;

    /// A cell while it is sorted in, by the middle of its box.
    struct Item
    {
        std::array<float, D> middle;
        std::uint32_t cell;
    };

    /// Neighbouring items, in the first or the second of the two arrays.
    struct Range
    {
        std::uint32_t begin;
        std::uint32_t end;
        bool isSpare;

        std::uint32_t size() const { return end - begin; }
    };

    /// What a node has to know of a child.
    struct Part
    {
        FloatBox<D> box = FloatBox<D>::empty();
        std::uint32_t link = 0;
        /// Of a leaf.
        std::uint32_t count = 0;
    };

    /// A part of the tree that one thread makes: a node with branches below, or many nodes, of which
    /// the first is the root.
    struct Branch
    {
        std::vector<Node> nodes;
        std::vector<Branch> below;
        Part whole;
        std::uint32_t firstNode = 0;
    };

    void measureCells()
    {
        const std::size_t count = mGridCells.size();
        mBoxes = LargeVector<FloatBox<D>>(count);
        mItems = LargeVector<Item>(count);
        bool areAllFinite = true;
#pragma omp parallel for schedule(static) reduction(&& : areAllFinite) if (count >= cellsPerBranch)
        for (std::size_t cell = 0; cell < count; ++cell)
        {
            Vertices vertices;
            mGridCells.gather(cell, vertices);
            FloatBox<D>& box = mBoxes[cell];
            box.lower.fill(std::numeric_limits<float>::quiet_NaN());
            if (vertices.type != CellType::Invalid)
            {
                const Box<D> bounds =
                    CellGeometry<D>(vertices.type, vertices.positions.data()).bounds();
                box = {mTree.map(bounds.lower).rounded, mTree.map(bounds.upper).rounded};
            }
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

    /// Gives each branch its place in the tree, from `first` on. Returns where the next may begin.
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

    /// Copies the nodes of a branch to the tree; links within were counted from its own first node.
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

    /// Divides a range of more cells than a leaf has into up to four, the largest again and again.
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
            const Range half = *largest;
            const std::uint32_t middle = halve(half, depth + (count > 1 ? 1 : 0));
            *largest = {half.begin, middle, !half.isSpare};
            children[count++] = {middle, half.end, !half.isSpare};
        }
        return count;
    }

    Item* itemsOf(bool isSpare) { return isSpare ? mSpareItems.data() : mItems.data(); }

    /// Moves the items to the other array, those of the left half first. Returns where the right
    /// half begins.
    std::uint32_t halve(const Range& range, int depth)
    {
        const Item* const items = itemsOf(range.isSpare);
        Item* const spare = itemsOf(!range.isSpare);
        const std::uint32_t begin = range.begin;
        const std::uint32_t end = range.end;
        FloatBox<D> middles = FloatBox<D>::empty();
        for (std::uint32_t i = begin; i < end; ++i)
            middles.add({items[i].middle, items[i].middle});
        const std::size_t axis = longestAxis(middles, items, begin, end);
        const float plane = 0.5F * middles.lower[axis] + 0.5F * middles.upper[axis];

        // Every item is written to both ends, and stays at the one whose counter goes on: there is
        // no branch to be foretold.
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
        return left;
    }

    /// The axis along which the most cells lie behind one another, going by a few of them.
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

    Part buildLeaf(const Range& range)
    {
        const std::span items(itemsOf(range.isSpare) + range.begin, range.size());
        std::ranges::sort(items, {}, &Item::cell);
        Part part;
        part.link = range.begin;
        part.count = range.size();
        for (const Item& item : items)
            part.box.add(mBoxes[item.cell]);
        for (std::size_t n = 0; n < items.size(); ++n)
            mTree.mCells[range.begin + n] = items[n].cell;
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
                CellFilter<D>::writeBox(mBoxes[cell].lower, mBoxes[cell].upper, numbers + n,
                                        leaf.count);
        }
    }

    void writeSimplex(std::uint32_t cell, const Position& origin, float* numbers, std::size_t row)
    {
        Vertices vertices;
        mGridCells.gather(cell, vertices);
        std::array<Position, D + 1> local;
        for (std::size_t k = 0; k <= D; ++k)
        {
            const auto mapped = mTree.map(vertices.positions[k]);
            for (std::size_t i = 0; i < D; ++i)
                local[k][i] = mapped.exact[i] - origin[i];
        }
        CellFilter<D>::writeSimplex(local.data(), numbers, row);
    }

    CellTree<D>& mTree;
    const GridCells<D>& mGridCells;
    LargeVector<FloatBox<D>> mBoxes;
    LargeVector<Item> mItems;
    LargeVector<Item> mSpareItems;
    bool mIsOutOfMemory = false;
};

template<std::size_t D>
CellTree<D>::CellTree(const GridCells<D>& cells) : mFilter(cells.commonType())
{
    // A few wild coordinates, as that of a mark for a missing value, must not make all other cells
    // too small for single precision.
    const Box<D>& most = cells.boxOfMost();
    mOrigin = 0.5 * (most.lower + most.upper);
    double spread = maximumNorm(most.upper - most.lower);
    if (spread == 0.0)
        spread = maximumNorm(0.5 * cells.box().upper - 0.5 * cells.box().lower);
    if (spread > 0.0)
        mUnit = std::ldexp(1.0, -std::ilogb(spread));
    TreeBuilder<D>(*this, cells).build();
}

template<std::size_t D>
bool CellTree<D>::findLeaves(const std::array<float, D>& lower, const std::array<float, D>& upper,
                             std::size_t maximumCells, std::vector<Leaf>& leaves) const
{
    std::size_t numCells = 0;
    std::vector<const Node*> nodes;
    if (!mNodes.empty())
        nodes.push_back(mNodes.data());
    while (!nodes.empty() && numCells <= maximumCells)
    {
        const Node& node = *nodes.back();
        nodes.pop_back();
        for (std::size_t child = 0; child < maximumChildren; ++child)
        {
            bool isMet = true;
            for (std::size_t i = 0; i < D; ++i)
            {
                isMet &= node.lower[i][child] <= upper[i];
                isMet &= node.upper[i][child] >= lower[i];
            }
            if (!isMet)
                continue;
            if (node.count[child] == 0)
            {
                nodes.push_back(&mNodes[node.link[child]]);
                continue;
            }
            Leaf leaf;
            leaf.mCells = &mCells[node.link[child]];
            leaf.mFilters = filtersFrom(node.link[child]);
            leaf.mCount = node.count[child];
            leaves.push_back(leaf);
            numCells += leaf.mCount;
        }
    }
    return numCells <= maximumCells;
}

template<std::size_t D>
Box<D> CellTree<D>::bounds() const
{
    auto box = Box<D>::nothing();
    for (std::size_t child = 0; child < maximumChildren && !mNodes.empty(); ++child)
        for (std::size_t i = 0; i < D; ++i)
        {
            // Single precision may have moved the sides inward.
            const double lower = mNodes.front().lower[i][child];
            const double upper = mNodes.front().upper[i][child];
            constexpr double rounding = std::numeric_limits<float>::epsilon();
            constexpr double infinity = std::numeric_limits<double>::infinity();
            constexpr double far = 0.99 * farthest;
            const double least = mOrigin[i] + (lower - rounding * std::abs(lower)) / mUnit;
            const double most = mOrigin[i] + (upper + rounding * std::abs(upper)) / mUnit;
            box.lower[i] = std::min(box.lower[i], lower < -far ? -infinity : least);
            box.upper[i] = std::max(box.upper[i], upper > far ? infinity : most);
        }
    return box;
}

template class CellTree<1>;
template class CellTree<2>;
template class CellTree<3>;

}
