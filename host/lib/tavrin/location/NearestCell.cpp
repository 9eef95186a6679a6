#include <tavrin/location/NearestCell.hpp>

#include <tavrin/location/CellGeometry.hpp>
#include <tavrin/location/Inverse.hpp>

namespace tavrin
{

template<std::size_t D>
std::optional<ClosestPoint> NearestCell<D>::closestIn(std::uint32_t cell, const Position& position,
                                                      double limit) const
{
    if (dimensionOf(mCells.type(cell)) == D)
        return std::nullopt;
    typename GridCells<D>::Vertices vertices;
    mCells.gather(cell, vertices);
    return closestPoint<D>(geometryTypeOf(vertices.type), vertices.positions.data(), position,
                           limit);
}

template<std::size_t D>
auto NearestCell<D>::find(const Position& position) const -> std::optional<Answer>
{
    if (!std::isfinite(maximumNorm(position)))
        return std::nullopt;
    bool isFound = false;
    double shortest = mReach;
    mTree.searchAround(
        position, [&] { return shortest; },
        [&](std::uint32_t cell)
        {
            if (const auto closest = closestIn(cell, position, shortest))
            {
                isFound = true;
                shortest = closest->distance;
            }
        });
    if (!isFound)
        return std::nullopt;
    // Neighboring cells share the closest point, and their distances differ by rounding.
    const double limit = shortest + mCells.rounding() * (maximumNorm(position) + shortest);
    std::optional<Answer> answer;
    mTree.searchAround(
        position, [&] { return limit; },
        [&](std::uint32_t cell)
        {
            if (answer && answer->cell < cell)
                return;
            if (const auto closest = closestIn(cell, position, limit))
                answer = Answer{cell, closest->at};
        });
    return answer;
}

template class NearestCell<1>;
template class NearestCell<2>;
template class NearestCell<3>;

}
