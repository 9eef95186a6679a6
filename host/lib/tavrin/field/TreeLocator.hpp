#pragma once

#include <tavrin/field/CellLocator.hpp>
#include <tavrin/field/CellTree.hpp>

namespace tavrin
{

/// Finds positions in a grid with stored points, by a tree of its cells.
template<std::size_t D>
class TreeLocator final : public CellLocator<D>
{
public:
    using typename CellLocator<D>::Hint;
    using typename CellLocator<D>::Position;

    explicit TreeLocator(const EmbeddedCellComplex<D>& grid);

    bool locate(const Position& position, Location& location, Hint& hint) const override;
    std::size_t memory() const override { return sizeof(*this) + mCells.memory() + mTree.memory(); }

private:
    GridCells<D> mCells;
    /// The distance by which positions may be off for want of digits, in scaled coordinates.
    double mRounding;
    CellTree<D> mTree;
};

extern template class TreeLocator<1>;
extern template class TreeLocator<2>;
extern template class TreeLocator<3>;

}
