#pragma once

#include <tavrin/location/CellMatches.hpp>
#include <tavrin/location/GridCells.hpp>
#include <tavrin/location/MultilinearCells.hpp>
#include <tavrin/location/PaddedLattice.hpp>

namespace tavrin
{

/// Tests whether candidate cells contain some positions, and keeps the lowest cell that does for each
/// position. Positions are scaled by `GridCells::scale()`; their numbers fit into 32 bits.
template<std::size_t D>
class CellCandidates
{
public:
    using Position = Tensor<double, D>;

    /// The cells and the memory of the matches must outlive it.
    CellCandidates(const GridCells<D>& cells, const CellMatches& matches)
        : mCells(cells), mMatches(matches)
    {
    }

    /// Adds a cell that may contain position k.
    void add(std::size_t k, const Position& position, std::uint32_t cell)
    {
        if (!mMatches.accepts(k, cell))
            return;
        if (isMultilinear(mCells.type(cell), D))
            enqueue(k, position, cell);
        else
            test(k, position, cell);
    }

    /// Adds up to `Lanes::size` cells, each of which may contain the positions in one block of a
    /// lattice. Stops soon after `abortFlag` reads true.
    void add(std::span<const std::uint32_t> cells, std::span<const LatticeBlock> blocks,
             const PaddedLattice<D>& lattice, const volatile bool& abortFlag);

    /// Prefetches the vertices of cells that will be added soon.
    void fetch(std::span<const std::uint32_t> cells) const;

    /// Tests the candidates that are left. To be called after the last one was added.
    void finish()
    {
        if (mQueue.size() > 0)
            testQueue();
    }

private:
    // On a line there are no multilinear cells, but the type must exist.
    using Multilinear = MultilinearCells<D == 1 ? 2 : D>;

    void test(std::size_t k, const Position& position, std::uint32_t cell);
    void enqueue(std::size_t k, const Position& position, std::uint32_t cell);
    void fetchVertices(std::uint32_t cell, std::span<std::size_t, maximumVertices> points) const;
    void testQueue();
    void addTogether(std::span<const std::uint32_t> cells, std::span<const LatticeBlock> blocks,
                     const PaddedLattice<D>& lattice, const volatile bool& abortFlag);
    void enqueueBlock(const Multilinear& cells, std::size_t lane, const LatticeBlock& block,
                      const PaddedLattice<D>& lattice);
    Multilinear gatherCells(CellType type, std::size_t count);
    void keepAnswers(const Multilinear& cells);

    const GridCells<D>& mCells;
    CellMatches mMatches;

    /// The cell in each lane, and its vertices. All are multilinear and of one type.
    std::array<std::uint32_t, Lanes::size> mCellOfLane;
    std::array<std::array<std::size_t, maximumVertices>, Lanes::size> mPointsOfLane;
    CandidateQueue<D> mQueue;
};

extern template class CellCandidates<1>;
extern template class CellCandidates<2>;
extern template class CellCandidates<3>;

}
