#pragma once

#include <tavrin/field/CellCandidates.hpp>
#include <tavrin/field/CellLocator.hpp>
#include <tavrin/field/CellTree.hpp>

#include <optional>

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

    void locate(std::span<const Position> positions, Location* locations, std::uint8_t* isInside,
                Hint& hint) const override;

    /// `locate` in two parts, the first of which takes most of the time.
    void find(std::span<const Position> positions, CellPlaces places) const;
    void locate(std::uint32_t cell, const Reference& point, Location& location) const;

    /// The same for all positions of a lattice, faster where they are many. Where they are few for the
    /// cells among them it finds nothing out. Where `abortFlag` reads true the places are undefined.
    std::optional<StoredCellPlaces> find(const Lattice<D>& lattice,
                                         const volatile bool& abortFlag) const;

    Box<D> bounds() const override;
    std::size_t memory() const override { return sizeof(*this) + mCells.memory() + mTree.memory(); }

private:
    GridCells<D> mCells;
    CellTree<D> mTree;
};

extern template class TreeLocator<1>;
extern template class TreeLocator<2>;
extern template class TreeLocator<3>;

}
