#pragma once

#include <tavrin/field/CellTree.hpp>
#include <tavrin/field/Lattice.hpp>
#include <tavrin/field/SortedCoordinates.hpp>

#include <array>
#include <span>
#include <utility>
#include <vector>

namespace tavrin
{

/// Goes from leaf to leaf of a tree and finds the positions of a lattice in the boxes of the cells.
/// That is faster than to search for the positions where the cells among them are not many more.
template<std::size_t D>
class LatticeSweep
{
public:
    /// The tree keeps boxes of its cells. The lattice is scaled as the cells are, and not empty.
    LatticeSweep(const CellTree<D>& tree, const Lattice<D>& lattice);

    /// Whether it pays.
    bool isWorthwhile() const { return mIsWorthwhile; }

    /// Calls `atLeaf(cells, blocks)` with up to `CellTree::leafCapacity` cells and as many blocks of
    /// the lattice: all positions in the bounds of a cell, and few others. Before that it calls
    /// `fetch(cells)`, while there is time for it. Where it does not pay it misses some. Stops where
    /// `abortFlag` reads true.
    template<typename Fetch, typename AtLeaf>
    void run(const Fetch& fetch, const AtLeaf& atLeaf, const volatile bool& abortFlag) const
    {
        for (std::size_t n = 0; n < mLeaves.size() && !abortFlag; ++n)
        {
            if (n + leavesAhead < mLeaves.size())
                mLeaves[n + leavesAhead].fetch();
            if (n + cellsAhead < mLeaves.size())
                fetch(mLeaves[n + cellsAhead].cells());
            const auto& leaf = mLeaves[n];
            std::array<LatticeBlock, CellTree<D>::leafCapacity> blocks;
            for (std::size_t axis = 0; axis < D; ++axis)
                for (std::size_t cell = 0; cell < leaf.cells().size(); ++cell)
                {
                    blocks[cell].first[axis] = mAxes[axis].numBelow(leaf.lower(axis)[cell]);
                    blocks[cell].end[axis] = mAxes[axis].numUpTo(leaf.upper(axis)[cell]);
                }
            atLeaf(leaf.cells(), std::span<const LatticeBlock>(blocks).first(leaf.cells().size()));
        }
    }

private:
    /// How many cells there may be for each position, so that it pays to look at all of them.
    static constexpr std::size_t cellsPerPosition = 4;

    /// How many leaves ahead the memory is asked for a leaf, and later for the vertices of its cells.
    static constexpr std::size_t leavesAhead = 4;
    static constexpr std::size_t cellsAhead = 2;

    std::vector<SortedCoordinates> mAxes;
    std::vector<typename CellTree<D>::Leaf> mLeaves;
    bool mIsWorthwhile;
};

template<std::size_t D>
LatticeSweep<D>::LatticeSweep(const CellTree<D>& tree, const Lattice<D>& lattice)
{
    std::array<float, D> lower;
    std::array<float, D> upper;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        std::vector<float> mapped(lattice.planes[axis].size());
        std::ranges::transform(lattice.planes[axis], mapped.begin(),
                               [&](double coordinate) { return tree.map(axis, coordinate); });
        mAxes.emplace_back(std::move(mapped));
        lower[axis] = mAxes[axis].lowest();
        upper[axis] = mAxes[axis].highest();
    }
    mIsWorthwhile = tree.findLeaves(lower, upper, cellsPerPosition * lattice.size(), mLeaves);
}

}
