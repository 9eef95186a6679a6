#pragma once

#include <tavrin/base/Processors.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/location/StructuredCell.hpp>

namespace tavrin
{

/// Computes where in a uniform grid a position lies.
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

    /// A cell along an axis, and the share of the way through it.
    struct Along
    {
        std::size_t cell;
        double share;
    };

    /// Where an index lies; on a face in the lower cell. Any cell for an index outside.
    Along along(std::size_t axis, double index) const;

    bool locateOne(const Position& position, Location& location) const;

    /// The same for a grid whose axes are those of space and have more than one point each.
    TAVRIN_FOR_SEVERAL_PROCESSORS void locateInBox(std::span<const Position> positions,
                                                   Location* locations,
                                                   std::uint8_t* isInside) const;

    StructuredCell mCells;
    Position mStart;
    bool mIsOriented;
    bool mIsBox;
    /// From a position relative to the start to the index along each axis; along an axis with one
    /// point, to the distance from the grid. Not a number where the grid has no such inverse.
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
