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
        double rounding(std::size_t cell) const
        {
            const std::size_t end = std::min(cell + 1, coordinates.size() - 1);
            return coordinateRounding *
                   std::max(std::abs(coordinates[cell]), std::abs(coordinates[end]));
        }
        double tolerance(std::size_t cell) const
        {
            return toleranceIn(width(cell), rounding(cell));
        }

        std::size_t find(double x) const;
    };

    bool locateOne(const Position& position, Location& location, Hint& hint) const;

    StructuredCell mCells;
    std::array<Axis, D> mAxes;
};

extern template class RectilinearLocator<1>;
extern template class RectilinearLocator<2>;
extern template class RectilinearLocator<3>;

}
