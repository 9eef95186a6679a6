#pragma once

#include <tavrin/base/Processors.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/location/StructuredCell.hpp>

namespace tavrin
{

/// Computes the cell of a uniform grid that contains a position.
template<std::size_t D>
class UniformLocator final : public CellLocator<D>
{
public:
    using typename CellLocator<D>::Hint;
    using typename CellLocator<D>::Position;

    explicit UniformLocator(const UniformGrid<D>& grid);

    void locate(std::span<const Position> positions, Location* locations, std::uint8_t* isInside,
                Hint& hint) const override;
    Box<D> bounds() const override { return mBounds; }
    std::size_t memory() const override { return sizeof(*this); }

private:
    using Matrix = Tensor<double, D, D>;

    /// A cell along an axis, and the reference coordinate in it.
    struct Along
    {
        std::size_t cell;
        double share;
    };

    /// The cell of a fractional index, on a face the lower of both cells. Arbitrary for an index outside
    /// of the grid.
    Along along(std::size_t axis, double index) const;

    bool locateOne(const Position& position, Location& location) const;

    /// `locate` for a grid whose axes are those of the coordinates and have more than one point each.
    TAVRIN_FOR_SEVERAL_PROCESSORS void locateInBox(std::span<const Position> positions,
                                                   Location* locations,
                                                   std::uint8_t* isInside) const;

    StructuredCell mCells;
    Position mStart;
    bool mIsOriented;
    bool mIsBox;
    /// Maps a position relative to the start to the fractional index along each axis; along an axis with
    /// one point, to the distance from the grid. NaN where the grid has no inverse.
    Matrix mToIndices{};
    std::array<bool, D> mIsFlat;
    std::array<std::int64_t, D> mLastCell;
    std::array<double, D> mTolerance;
    Box<D> mBounds = Box<D>::nothing();
    /// The largest index that is inside, tolerance included.
    std::array<double, D> mLimit;
};

extern template class UniformLocator<1>;
extern template class UniformLocator<2>;
extern template class UniformLocator<3>;

}
