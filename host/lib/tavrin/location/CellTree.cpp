#include <tavrin/location/CellTree.hpp>

#include <tavrin/location/CellTreeBuilder.hpp>

namespace tavrin
{

template<std::size_t D>
CellTree<D>::CellTree(const GridCells<D>& cells) : mSpace(cells), mFilter(cells.commonType())
{
    CellTreeBuilder<D>(*this, cells).build();
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
            mSpace.addOriginals(i, mNodes.front().lower[i][child], mNodes.front().upper[i][child],
                                box);
    return box;
}

template class CellTree<1>;
template class CellTree<2>;
template class CellTree<3>;

}
