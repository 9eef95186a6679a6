#pragma once

#include <tavrin/domain/Lattice.hpp>
#include <tavrin/location/CellMatches.hpp>
#include <tavrin/location/GridCells.hpp>
#include <tavrin/location/MultilinearCells.hpp>

namespace tavrin
{

/// Tests cells that may contain some positions, and keeps the lowest that does for each. Positions
/// are scaled as the cells are, and numbered in 32 bits.
template<std::size_t D>
class CellCandidates
{
public:
    using Position = Tensor<double, D>;

    /// The cells must outlive it.
    CellCandidates(const GridCells<D>& cells, const CellMatches& matches)
        : mCells(cells), mMatches(matches)
    {
    }

    /// The cell may contain position k.
    void add(std::size_t k, const Position& position, std::uint32_t cell)
    {
        if (!mMatches.accepts(k, cell))
            return;
        if (isMultilinear(mCells.type(cell), D))
            enqueue(k, position, cell);
        else
            test(k, position, cell);
    }

    /// Each of up to `Lanes::size` cells may contain the positions in a block of a lattice, behind the
    /// planes of which seven numbers can be read. Stops where `abortFlag` reads true.
    void add(std::span<const std::uint32_t> cells, std::span<const LatticeBlock> blocks,
             const Lattice<D>& lattice, const volatile bool& abortFlag);

    /// Asks the memory for the vertices of cells that will be added soon.
    void fetch(std::span<const std::uint32_t> cells) const;

    /// To be called when all candidates were added; then the places are right.
    void finish()
    {
        if (mQueue.size() > 0)
            testQueue();
    }

private:
    // Cells on a line are none, but the type must exist.
    using Multilinear = MultilinearCells<D == 1 ? 2 : D>;

    void test(std::size_t k, const Position& position, std::uint32_t cell);
    void enqueue(std::size_t k, const Position& position, std::uint32_t cell);
    void fetchVertices(std::uint32_t cell, std::span<std::size_t, maximumVertices> points) const;
    void testQueue();
    void addTogether(std::span<const std::uint32_t> cells, std::span<const LatticeBlock> blocks,
                     const Lattice<D>& lattice, const volatile bool& abortFlag);
    void enqueueBlock(const Multilinear& cells, std::size_t lane, const LatticeBlock& block,
                      const Lattice<D>& lattice);
    Multilinear gatherCells(CellType type, std::size_t count);
    void keepAnswers(const Multilinear& cells);

    const GridCells<D>& mCells;
    CellMatches mMatches;

    /// Multilinear cells of one type, one in each lane.
    std::array<std::uint32_t, Lanes::size> mCellOfLane;
    std::array<std::array<std::size_t, maximumVertices>, Lanes::size> mPointsOfLane;
    CandidateQueue<D> mQueue;
};

extern template class CellCandidates<1>;
extern template class CellCandidates<2>;
extern template class CellCandidates<3>;

}
