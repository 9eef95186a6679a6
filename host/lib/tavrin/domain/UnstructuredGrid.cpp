#include <tavrin/domain/UnstructuredGrid.hpp>

namespace tavrin
{

template<std::size_t D>
UnstructuredGrid<D>::UnstructuredGrid(std::shared_ptr<const ValueArray<Point>> points,
                                      CellTable cells)
    : mPoints(std::move(points)), mCells(std::move(cells))
{
    mCells.check(mPoints->size());
}

template<std::size_t D>
Cell UnstructuredGrid<D>::cell(std::size_t index) const
{
    const std::int64_t first = mCells.offsets[index];
    const auto count = static_cast<std::size_t>(mCells.offsets[index + 1] - first);
    std::array<std::size_t, maximumVertices> vertices;
    for (std::size_t k = 0; k < count; ++k)
        vertices[k] =
            static_cast<std::size_t>(mCells.connectivity[static_cast<std::size_t>(first) + k]);
    return {mCells.types[index], std::span(vertices).first(count)};
}

template<std::size_t D>
bool UnstructuredGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const UnstructuredGrid*>(&other);
    return grid != nullptr &&
           (this == grid || (PointSet<D>::equals(other) && mCells == grid->mCells));
}

template class UnstructuredGrid<1>;
template class UnstructuredGrid<2>;
template class UnstructuredGrid<3>;

}
