#include <tavrin/field/CellTree.hpp>

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

bool fillsSpace(CellType type, std::size_t space)
{
    return (type == CellType::Triangles && space == 2) ||
           (type == CellType::Tetrahedra && space == 3);
}

}

/// Builds a tree from the top down.
template<std::size_t D>
class TreeBuilder
{
public:
    TreeBuilder(CellTree<D>& tree, const GridCells<D>& cells, double rounding)
        : mTree(tree), mGridCells(cells), mRounding(rounding)
    {
    }

    void build()
    {
        measureCells();
        const auto count = static_cast<std::uint32_t>(mItems.size());
        if (count == 0)
            return;
        mSpareItems = LargeVector<Item>(count);
        mTree.mCells = LargeVector<std::uint32_t>(count);
        // Rows are read four numbers at a time, beyond the end of the last.
        mTree.mFilter = LargeVector<float>(count * mTree.filterSize() + Tree::leafCapacity);
        std::ranges::fill(std::span(mTree.mFilter).last(Tree::leafCapacity), 0.0F);
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
        std::uint32_t lowestCell = Tree::nothing;
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
                    CellGeometry<D>(vertices.type, vertices.positions.data(), mRounding).bounds();
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
                if (node.count(i) == 0)
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
            node.lowestAndCount[i] = (part.lowestCell & ~15U) | part.count;
            whole.box.add(part.box);
            whole.lowestCell = std::min(whole.lowestCell, part.lowestCell);
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
        const std::span cells(mTree.mCells.data() + range.begin, range.size());
        const Item* const items = itemsOf(range.isSpare);
        std::transform(items + range.begin, items + range.end, cells.begin(),
                       [](const Item& item) { return item.cell; });
        std::ranges::sort(cells);
        Part part;
        part.lowestCell = cells.front();
        part.link = range.begin;
        part.count = range.size();
        for (const std::uint32_t cell : cells)
            part.box.add(mBoxes[cell]);
        float* const rows = mTree.mFilter.data() + range.begin * mTree.filterSize();
        if (mTree.mAreSimplices)
            packSimplices(rows, part.box, cells);
        else
            packBoxes(rows, cells);
        return part;
    }

    void packBoxes(float* rows, std::span<const std::uint32_t> cells)
    {
        for (std::size_t n = 0; n < cells.size(); ++n)
            for (std::size_t i = 0; i < D; ++i)
            {
                rows[(2 * i) * cells.size() + n] = mBoxes[cells[n]].lower[i];
                rows[(2 * i + 1) * cells.size() + n] = mBoxes[cells[n]].upper[i];
            }
    }

    void packSimplices(float* rows, const FloatBox<D>& box, std::span<const std::uint32_t> cells)
    {
        std::array<double, D> origin;
        for (std::size_t i = 0; i < D; ++i)
            origin[i] = Tree::middle(box.lower[i], box.upper[i]);
        for (std::size_t n = 0; n < cells.size(); ++n)
            packSimplex(cells[n], origin, rows + n, cells.size());
    }

    /// Weight i + 1 of the simplex is row 0 plus rows 1 ... D times the local position, for the i-th
    /// group of D + 1 rows.
    void packSimplex(std::uint32_t cell, const std::array<double, D>& origin, float* rows,
                     std::size_t stride)
    {
        Vertices vertices;
        mGridCells.gather(cell, vertices);
        const auto local = [&](std::size_t vertex)
        {
            const auto mapped = mTree.map(vertices.positions[vertex]);
            Tensor<double, D> position;
            for (std::size_t i = 0; i < D; ++i)
                position[i] = mapped.exact[i] - origin[i];
            return position;
        };
        const Tensor<double, D> start = local(0);
        Tensor<double, D> reach;
        for (std::size_t i = 0; i < D; ++i)
            reach[i] = std::abs(start[i]);
        Columns<D> edges;
        for (std::size_t i = 0; i < D; ++i)
        {
            const Tensor<double, D> end = local(i + 1);
            edges[i] = end - start;
            for (std::size_t j = 0; j < D; ++j)
                reach[j] = std::max(reach[j], std::abs(end[j]));
        }
        const Inverse<D> inverse(edges);
        double magnitude = 0.0;
        std::array<std::array<double, D + 1>, D> weights;
        for (std::size_t i = 0; i < D; ++i)
        {
            const Tensor<double, D>& row = inverse.row(i);
            weights[i][0] = -dot(row, start);
            magnitude += std::abs(weights[i][0]);
            for (std::size_t j = 0; j < D; ++j)
            {
                weights[i][j + 1] = row[j];
                magnitude += std::abs(row[j]) * reach[j];
            }
        }
        // Half the margin is for rounding here and in the search, half for the cell's tolerance.
        const double error = 8.0 * std::numeric_limits<float>::epsilon() * magnitude;
        const bool isReliable =
            inverse.independence() > 1e-8 && error < 0.5 * static_cast<double>(Tree::simplexMargin);
        for (std::size_t i = 0; i < D; ++i)
            for (std::size_t j = 0; j <= D; ++j)
            {
                // A simplex that cannot be ruled out has its middle everywhere.
                const double everywhere = j == 0 ? 1.0 / static_cast<double>(D + 1) : 0.0;
                rows[(i * (D + 1) + j) * stride] =
                    static_cast<float>(isReliable ? weights[i][j] : everywhere);
            }
    }

    CellTree<D>& mTree;
    const GridCells<D>& mGridCells;
    double mRounding;
    LargeVector<FloatBox<D>> mBoxes;
    LargeVector<Item> mItems;
    LargeVector<Item> mSpareItems;
    bool mIsOutOfMemory = false;
};

template<std::size_t D>
CellTree<D>::CellTree(const GridCells<D>& cells, double rounding)
    : mAreSimplices(fillsSpace(cells.commonType(), D))
{
    double extent = 0.0;
    for (std::size_t i = 0; i < D; ++i)
    {
        mOrigin[i] = 0.5 * (cells.lower()[i] + cells.upper()[i]);
        extent = std::max(extent, cells.upper()[i] - cells.lower()[i]);
    }
    if (extent > 0.0)
        mUnit = std::ldexp(1.0, -std::ilogb(extent));
    TreeBuilder<D>(*this, cells, rounding).build();
}

template class CellTree<1>;
template class CellTree<2>;
template class CellTree<3>;

}
