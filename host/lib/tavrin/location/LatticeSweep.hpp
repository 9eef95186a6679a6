#pragma once

#include <tavrin/domain/Lattice.hpp>
#include <tavrin/location/CellTree.hpp>
#include <tavrin/location/SortedCoordinates.hpp>

#include <array>
#include <optional>
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
    /// The sweep of a tree that keeps boxes of its cells, and of a lattice that is scaled as they are
    /// and not empty; or nothing where it would not pay.
    static std::optional<LatticeSweep> over(const CellTree<D>& tree, const Lattice<D>& lattice);

    /// So many cells come at once.
    static constexpr std::size_t cellsAtOnce = CellTree<D>::leafCapacity;

    /// Calls `visit(cells, blocks)` with `cellsAtOnce` neighboring cells, in the end fewer, and as
    /// many blocks of the lattice: all positions in the bounds of a cell, and few others. Before that
    /// it calls `fetch(cells)`, while there is time for it. Stops where `abortFlag` reads true.
    template<typename Fetch, typename Visit>
    void run(const Fetch& fetch, const Visit& visit, const volatile bool& abortFlag) const
    {
        std::array<std::uint32_t, 2 * cellsAtOnce> cells;
        std::array<LatticeBlock, 2 * cellsAtOnce> blocks;
        std::size_t count = 0;
        for (std::size_t n = 0; n < mLeaves.size() && !abortFlag; ++n)
        {
            if (n + leavesAhead < mLeaves.size())
                mLeaves[n + leavesAhead].fetch();
            if (n + cellsAhead < mLeaves.size())
                fetch(mLeaves[n + cellsAhead].cells());
            findBlocks(mLeaves[n], &blocks[count]);
            std::ranges::copy(mLeaves[n].cells(), &cells[count]);
            count += mLeaves[n].cells().size();
            if (count < cellsAtOnce)
                continue;
            visit(std::span<const std::uint32_t>(cells).first(cellsAtOnce),
                  std::span<const LatticeBlock>(blocks).first(cellsAtOnce));
            count -= cellsAtOnce;
            std::copy_n(&cells[cellsAtOnce], count, cells.begin());
            std::copy_n(&blocks[cellsAtOnce], count, blocks.begin());
        }
        visit(std::span<const std::uint32_t>(cells).first(count),
              std::span<const LatticeBlock>(blocks).first(count));
    }

private:
    LatticeSweep() = default;

    /// How many cells there may be for each position, so that it pays to look at all of them.
    static constexpr std::size_t cellsPerPosition = 4;

    /// How many leaves ahead the memory is asked for a leaf, and later for the vertices of its cells.
    static constexpr std::size_t leavesAhead = 8;
    static constexpr std::size_t cellsAhead = 2;

    void findBlocks(const typename CellTree<D>::Leaf& leaf, LatticeBlock* blocks) const
    {
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            const auto first = mAxes[axis].numBelow(leaf.lower(axis));
            const auto end = mAxes[axis].numUpTo(leaf.upper(axis));
            for (std::size_t cell = 0; cell < leaf.cells().size(); ++cell)
            {
                blocks[cell].first[axis] = first[cell];
                blocks[cell].end[axis] = end[cell];
            }
        }
    }

    std::vector<SortedCoordinates> mAxes;
    std::vector<typename CellTree<D>::Leaf> mLeaves;
};

template<std::size_t D>
std::optional<LatticeSweep<D>> LatticeSweep<D>::over(const CellTree<D>& tree,
                                                     const Lattice<D>& lattice)
{
    LatticeSweep sweep;
    std::array<float, D> lower;
    std::array<float, D> upper;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        std::vector<float> mapped(lattice.planes[axis].size());
        std::ranges::transform(lattice.planes[axis], mapped.begin(),
                               [&](double coordinate) { return tree.map(axis, coordinate); });
        const auto& sorted = sweep.mAxes.emplace_back(std::move(mapped));
        lower[axis] = sorted.lowest();
        upper[axis] = sorted.highest();
    }
    const std::size_t mostCells = cellsPerPosition * lattice.size();
    if (!tree.findLeaves(lower, upper, mostCells, sweep.mLeaves))
        return {};
    return sweep;
}

}
