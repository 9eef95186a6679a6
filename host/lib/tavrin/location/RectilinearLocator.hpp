#pragma once

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/location/StructuredCell.hpp>
#include <tavrin/location/Tolerance.hpp>

namespace tavrin
{

/// Searches the coordinates of a rectilinear grid for a position.
template<std::size_t D>
class RectilinearLocator final : public CellLocator<D>
{
public:
    using typename CellLocator<D>::Hint;
    using typename CellLocator<D>::Position;

    explicit RectilinearLocator(const RectilinearGrid<D>& grid);

    void locate(std::span<const Position> positions, Location* locations, std::uint8_t* isInside,
                Hint& hint) const override;
    Box<D> bounds() const override;
    std::size_t memory() const override;

private:
    /// The coordinates along an axis, multiplied by `sign` so that they ascend.
    struct Axis
    {
        double sign;
        std::vector<double> coordinates;

        std::size_t lastCell() const { return coordinates.size() - 2; }

        /// The reference coordinate of x in a cell.
        double share(std::size_t cell, double x) const
        {
            return (x - coordinates[cell]) / width(cell);
        }
        double width(std::size_t cell) const { return coordinates[cell + 1] - coordinates[cell]; }

        std::size_t find(double x) const;
    };

    /// The tolerance in reference coordinates for x in a cell of an axis.
    double tolerance(const Axis& axis, std::size_t cell, double x) const
    {
        return toleranceIn(axis.width(cell), mRounding * std::abs(x));
    }

    bool locateOne(const Position& position, Location& location, Hint& hint) const;

    StructuredCell mCells;
    std::array<Axis, D> mAxes;
    /// The rounding of coordinates relative to their size.
    double mRounding;
};

extern template class RectilinearLocator<1>;
extern template class RectilinearLocator<2>;
extern template class RectilinearLocator<3>;

}
