#pragma once

#include <tavrin/domain/Lattice.hpp>
#include <tavrin/location/CellTree.hpp>
#include <tavrin/location/SortedCoordinates.hpp>

#include <array>
#include <cassert>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace tavrin
{

/// Visits the leaves of a tree one after the other and finds the positions of a lattice in the box of each
/// cell. That is faster than searching for each position, unless cells far outnumber positions.
template<std::size_t D>
class LatticeSweep
{
public:
    /// The sweep over a tree that keeps boxes of its cells and a lattice that is not empty and scaled as
    /// the cells are. Nothing where searching for each position is faster.
    static std::optional<LatticeSweep> over(const CellTree<D>& tree, const Lattice<D>& lattice);

    /// The number of cells in each call of `visit`.
    static constexpr std::size_t cellsAtOnce = CellTree<D>::leafCapacity;

    /// Calls `visit(cells, blocks)` with `cellsAtOnce` neighboring cells, fewer in the last call, and one
    /// block of the lattice for each: the positions inside the bounds of the cell, and few others. Some
    /// time before that it calls `fetch(cells)`, to prefetch them. Stops soon after `abortFlag` reads
    /// true.
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

    /// The largest number of cells per position for which visiting all of them pays off: looking up a
    /// cell's block takes about a quarter of the time of searching for one position.
    static constexpr std::size_t cellsPerPosition = 4;

    /// How many leaves ahead a leaf is prefetched, and later the vertices of its cells. Eight leaves of
    /// eight cells take longer than the memory needs to deliver; the vertices of two leaves fit into
    /// the nearest cache.
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
    assert(tree.hasBoxes() && lattice.size() > 0);
    LatticeSweep sweep;
    std::array<float, D> lower;
    std::array<float, D> upper;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        std::vector<float> mapped(lattice.planes[axis].size());
        std::ranges::transform(lattice.planes[axis], mapped.begin(),
                               [&](double coordinate)
                               { return tree.space().map(axis, coordinate); });
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
