#include <tavrin/domain/RectilinearGrid.hpp>

#include <cmath>

namespace tavrin
{

namespace
{

template<std::size_t D>
GridSize sizeOf(const std::array<std::vector<double>, D>& coordinates)
{
    GridSize size{1, 1, 1};
    for (std::size_t axis = 0; axis < D; ++axis)
        size[axis] = coordinates[axis].size();
    return size;
}

void check(const std::vector<double>& coordinates, std::size_t axis)
{
    const auto complain = [&](const char* fault)
    { throw runtime_error("the coordinates of axis " + std::to_string(axis) + fault); };
    if (!std::ranges::all_of(coordinates, [](double x) { return std::isfinite(x); }))
        complain(" are not finite");
    const auto isNotStrictly = [&](auto compare)
    { return std::ranges::adjacent_find(coordinates, compare) != coordinates.end(); };
    if (isNotStrictly(std::greater_equal()) && isNotStrictly(std::less_equal()))
        complain(" neither ascend nor descend");
}

}

template<std::size_t D>
RectilinearGrid<D>::RectilinearGrid(Coordinates coordinates, Precision precision)
    : StructuredGrid<D>(sizeOf(coordinates)), mCoordinates(std::move(coordinates)),
      mPrecision(precision)
{
    for (std::size_t axis = 0; axis < D; ++axis)
        check(mCoordinates[axis], axis);
}

template<std::size_t D>
typename RectilinearGrid<D>::Point RectilinearGrid<D>::point(std::size_t index) const
{
    const GridSize indices = this->pointIndices(index);
    Point position;
    for (std::size_t axis = 0; axis < D; ++axis)
        position[axis] = mCoordinates[axis][indices[axis]];
    return position;
}

template<std::size_t D>
bool RectilinearGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const RectilinearGrid*>(&other);
    return grid != nullptr && mCoordinates == grid->mCoordinates;
}

template class RectilinearGrid<1>;
template class RectilinearGrid<2>;
template class RectilinearGrid<3>;

}
