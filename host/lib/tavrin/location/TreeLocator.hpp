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

    /// Positions in no cell are located in the closest cell of fewer dimensions than the space, at its
    /// closest point, if that is no farther than `reach`.
    explicit TreeLocator(const EmbeddedCellComplex<D>& grid, double reach = 0.0);

    /// The locator of the same grid with another reach. Both share the search structure.
    TreeLocator(const TreeLocator& other, double reach);

    void locate(std::span<const Position> positions, Location* locations, std::uint8_t* isInside,
                Hint& hint) const override;

    bool isSearching() const override { return true; }
    std::unique_ptr<FoundPositions> find(std::span<const Position> positions) const override;
    std::unique_ptr<FoundPositions> find(const Lattice<D>& lattice,
                                         const volatile bool& abortFlag) const override;

    Box<D> bounds() const override;
    std::size_t memory() const override
    {
        return sizeof(*this) + mCells->memory() + mTree->memory();
    }

private:
    /// Positions with the cell and the reference point of each.
    class Found;

    /// Both steps of `locate`, of which the first takes most of the time.
    void find(std::span<const Position> positions, CellMatches matches) const;
    void locate(std::uint32_t cell, const Reference& point, Location& location) const;

    bool isReaching() const { return mReach > 0.0 && mTree->hasBoxes(); }
    /// Adds the closest cells within reach to the matches of positions in no cell. `position(k)` is
    /// scaled.
    template<typename PositionOf>
    void reach(std::size_t count, const PositionOf& position, CellMatches matches) const;

    std::shared_ptr<const GridCells<D>> mCells;
    std::shared_ptr<const CellTree<D>> mTree;
    double mReach;
};

extern template class TreeLocator<1>;
extern template class TreeLocator<2>;
extern template class TreeLocator<3>;

}
