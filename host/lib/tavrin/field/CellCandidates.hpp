#pragma once

#include <tavrin/field/GridCells.hpp>
#include <tavrin/field/Lanes.hpp>
#include <tavrin/field/MultilinearMap.hpp>
#include <tavrin/field/ShapeFunctions.hpp>

namespace tavrin
{

/// The lowest cell that contains a position, and the reference point there; or no cell.
struct CellPlace
{
    static constexpr std::uint32_t nothing = 0xffffffff;

    std::uint32_t cell = nothing;
    Reference at{};

    bool isInside() const { return cell != nothing; }
};

/// Tests cells that may contain one of a few positions, and keeps the lowest that does for each.
/// Quads, prisms and hexahedra are inverted several at a time; no answer depends on which of them
/// come together.
template<std::size_t D>
class CellCandidates
{
public:
    using Position = Tensor<double, D>;

    /// The positions are scaled as the cells are, and each has a place, which is nothing yet. All must
    /// outlive it.
    CellCandidates(const GridCells<D>& cells, const Position* positions, CellPlace* places)
        : mCells(cells), mPositions(positions), mPlaces(places)
    {
    }

    /// The cell may contain position k.
    void add(std::size_t k, std::uint32_t cell)
    {
        if (cell >= mPlaces[k].cell)
            return;
        if (D >= 2 && isMultilinear(mCells.type(cell), D))
            addToBatch(k, cell);
        else
            test(k, cell);
    }

    /// To be called when all candidates were added; then the places are right.
    void finish()
    {
        if (mBatchSize > 0)
            testBatch();
    }

private:
    void test(std::size_t k, std::uint32_t cell);
    void addToBatch(std::size_t k, std::uint32_t cell);
    void testBatch();
    void keep(std::size_t k, std::uint32_t cell, const Reference& at)
    {
        if (cell < mPlaces[k].cell)
            mPlaces[k] = {cell, at};
    }

    const GridCells<D>& mCells;
    const Position* mPositions;
    CellPlace* mPlaces;

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
