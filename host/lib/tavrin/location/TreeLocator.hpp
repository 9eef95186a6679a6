#pragma once

#include <tavrin/domain/CellLocator.hpp>
#include <tavrin/location/CellCandidates.hpp>
#include <tavrin/location/CellTree.hpp>

namespace tavrin
{

/// Finds the cell that contains a position in a grid with stored points, by a tree of its cells.
template<std::size_t D>
class TreeLocator final : public CellLocator<D>
{
public:
    using typename CellLocator<D>::Hint;
    using typename CellLocator<D>::Position;

    explicit TreeLocator(const EmbeddedCellComplex<D>& grid);

    void locate(std::span<const Position> positions, Location* locations, std::uint8_t* isInside,
                Hint& hint) const override;

    bool isSearching() const override { return true; }
    std::unique_ptr<FoundPositions> find(std::span<const Position> positions) const override;
    std::unique_ptr<FoundPositions> find(const Lattice<D>& lattice,
                                         const volatile bool& abortFlag) const override;

    Box<D> bounds() const override;
    std::size_t memory() const override { return sizeof(*this) + mCells.memory() + mTree.memory(); }

private:
    /// Positions with the cell and the reference point of each.
    class Found;

    /// Both steps of `locate`, of which the first takes most of the time.
    void find(std::span<const Position> positions, CellMatches matches) const;
    void locate(std::uint32_t cell, const Reference& point, Location& location) const;

    GridCells<D> mCells;
    CellTree<D> mTree;
};

extern template class TreeLocator<1>;
extern template class TreeLocator<2>;
extern template class TreeLocator<3>;

}
