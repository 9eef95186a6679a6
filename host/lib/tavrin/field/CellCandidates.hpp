#pragma once

#include <tavrin/field/CellTree.hpp>
#include <tavrin/field/Lanes.hpp>
#include <tavrin/field/MultilinearMap.hpp>
#include <tavrin/field/ShapeFunctions.hpp>

namespace tavrin
{

/// Tests cells that may contain one of a few positions, and keeps the lowest that does for each.
/// Quads, prisms and hexahedra are inverted several at a time; no answer depends on which of them
/// come together.
template<std::size_t D>
class CellCandidates
{
public:
    using Position = Tensor<double, D>;
    using Positions = std::array<Position, CellTree<D>::packetSize>;

    static constexpr std::uint32_t nothing = 0xffffffff;

    /// Where a position was found, or nothing.
    struct Found
    {
        std::uint32_t cell = nothing;
        Reference at;
    };

    /// Cells and positions, which are scaled as the cells are, must outlive it.
    CellCandidates(const GridCells<D>& cells, const Positions& positions)
        : mCells(cells), mPositions(positions)
    {
    }

    /// The cell may contain position k.
    void add(std::size_t k, std::uint32_t cell)
    {
        if (cell >= mFound[k].cell)
            return;
        if (D >= 2 && isMultilinear(mCells.type(cell), D))
            addToBatch(k, cell);
        else
            test(k, cell);
    }

    /// For each position, when all candidates were added.
    const std::array<Found, CellTree<D>::packetSize>& finish()
    {
        if (mBatchSize > 0)
            testBatch();
        return mFound;
    }

private:
    void test(std::size_t k, std::uint32_t cell);
    void addToBatch(std::size_t k, std::uint32_t cell);
    void testBatch();
    void keep(std::size_t k, std::uint32_t cell, const Reference& at)
    {
        if (cell < mFound[k].cell)
            mFound[k] = {cell, at};
    }

    const GridCells<D>& mCells;
    const Positions& mPositions;
    std::array<Found, CellTree<D>::packetSize> mFound;

    /// Cells of one type, to be tested side by side.
    std::size_t mBatchSize = 0;
    CellType mBatchType = CellType::Invalid;
    std::array<std::uint32_t, Lanes::size> mBatchCells;
    std::array<std::size_t, Lanes::size> mBatchPositions;
    std::array<std::array<std::size_t, maximumVertices>, Lanes::size> mBatchPoints;
};

extern template class CellCandidates<1>;
extern template class CellCandidates<2>;
extern template class CellCandidates<3>;

}
