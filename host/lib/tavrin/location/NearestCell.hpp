#pragma once

#include <tavrin/location/CellTree.hpp>
#include <tavrin/location/ClosestPoint.hpp>

#include <optional>

namespace tavrin
{

/// Finds the cell of fewer dimensions than the space that is closest to a position: the lowest one of those
/// that are equally close as far as rounding can tell. The answer depends on the grid and the
/// position alone.
template<std::size_t D>
class NearestCell
{
public:
    using Position = Tensor<double, D>;

    struct Answer
    {
        std::uint32_t cell;
        /// The closest point of the cell.
        Reference at;
    };

    /// Cells farther away than `reach` are not found. Distances and positions are scaled by
    /// `GridCells::scale()`. The cells and the tree, which must keep boxes, must outlive it.
    NearestCell(const GridCells<D>& cells, const CellTree<D>& tree, double reach)
        : mCells(cells), mTree(tree), mReach(reach)
    {
    }

    std::optional<Answer> find(const Position& position) const;

private:
    /// The closest point of a cell of fewer dimensions than the space, within a distance.
    std::optional<ClosestPoint> closestIn(std::uint32_t cell, const Position& position,
                                          double limit) const;

    const GridCells<D>& mCells;
    const CellTree<D>& mTree;
    double mReach;
};

extern template class NearestCell<1>;
extern template class NearestCell<2>;
extern template class NearestCell<3>;

}
