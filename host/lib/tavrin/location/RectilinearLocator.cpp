#include <tavrin/location/RectilinearLocator.hpp>

namespace tavrin
{

template<std::size_t D>
RectilinearLocator<D>::RectilinearLocator(const RectilinearGrid<D>& grid)
    : mCells(grid.numbering()), mRounding(roundingOf(grid.coordinatePrecision()))
{
    for (std::size_t i = 0; i < D; ++i)
    {
        Axis& axis = mAxes[i];
        axis.coordinates = grid.coordinates()[i];
        axis.sign = axis.coordinates.front() <= axis.coordinates.back() ? 1.0 : -1.0;
        for (double& coordinate : axis.coordinates)
            coordinate *= axis.sign;
    }
}

template<std::size_t D>
std::size_t RectilinearLocator<D>::Axis::find(double x) const
{
    const auto inner = std::span(coordinates).subspan(1, lastCell());
    return static_cast<std::size_t>(std::ranges::upper_bound(inner, x) - inner.begin());
}

template<std::size_t D>
void RectilinearLocator<D>::locate(std::span<const Position> positions, Location* locations,
                                   std::uint8_t* isInside, Hint& hint) const
{
    if (hint.locator != this)
        hint = {.locator = this};
    for (std::size_t k = 0; k < positions.size(); ++k)
        isInside[k] = locateOne(positions[k], locations[k], hint) ? 1 : 0;
}

template<std::size_t D>
bool RectilinearLocator<D>::locateOne(const Position& position, Location& location,
                                      Hint& hint) const
{
    StructuredCell::Builder builder(mCells);
    double across = 0.0;
    for (std::size_t i = 0; i < D; ++i)
    {
        const Axis& axis = mAxes[i];
        if (axis.coordinates.size() < 2)
            continue;
        const double x = axis.sign * position[i];
        std::size_t cell = hint.indices[i];
        if (!(x >= axis.coordinates[cell] && x < axis.coordinates[cell + 1]))
            cell = axis.find(x);
        hint.indices[i] = cell;
        double share = axis.share(cell, x);
        if (!(share >= -largestTolerance && share <= 1.0 + largestTolerance))
            return false;
        if (share < 0.0 || share > 1.0)
        {
            const double allowed = tolerance(axis, cell, x);
            if (share < -allowed || share > 1.0 + allowed)
                return false;
        }
        while (cell > 0 && axis.share(cell - 1, x) <= 1.0 + tolerance(axis, cell - 1, x))
            share = axis.share(--cell, x);
        across = std::max(across, axis.width(cell));
        builder.set(i, cell, share);
    }
    for (std::size_t i = 0; i < D; ++i)
    {
        const Axis& axis = mAxes[i];
        const double distance = std::abs(axis.sign * position[i] - axis.coordinates[0]);
        if (axis.coordinates.size() < 2 &&
            !(distance <= locationTolerance * across + mRounding * std::abs(axis.coordinates[0])))
            return false;
    }
    builder.fill(location);
    return true;
}

template<std::size_t D>
Box<D> RectilinearLocator<D>::bounds() const
{
    Box<D> box;
    double widest = 0.0;
    for (std::size_t i = 0; i < D; ++i)
    {
        const auto& coordinates = mAxes[i].coordinates;
        box.lower[i] =
            std::min(mAxes[i].sign * coordinates.front(), mAxes[i].sign * coordinates.back());
        box.upper[i] =
            std::max(mAxes[i].sign * coordinates.front(), mAxes[i].sign * coordinates.back());
        widest = std::max(widest, box.upper[i] - box.lower[i]);
    }
    // A tolerance is at most a thousandth of a cell, or the rounding of a coordinate.
    for (std::size_t i = 0; i < D; ++i)
    {
        const double margin = largestTolerance * widest +
                              mRounding * std::max(std::abs(box.lower[i]), std::abs(box.upper[i]));
        box.lower[i] -= margin;
        box.upper[i] += margin;
    }
    return box;
}

template<std::size_t D>
std::size_t RectilinearLocator<D>::memory() const
{
    std::size_t bytes = sizeof(*this);
    for (const Axis& axis : mAxes)
        bytes += axis.coordinates.capacity() * sizeof(double);
    return bytes;
}

template class RectilinearLocator<1>;
template class RectilinearLocator<2>;
template class RectilinearLocator<3>;

}
