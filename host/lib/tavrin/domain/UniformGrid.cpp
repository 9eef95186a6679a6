#include <tavrin/domain/UniformGrid.hpp>

#include <cmath>

namespace tavrin
{

template<std::size_t D>
UniformGrid<D>::UniformGrid(const Layout& layout)
    : StructuredGrid<D>(layout.size), mLayout(layout),
      mIsOriented(layout.direction != unitMatrix<D>())
{
    const auto isFinite = [](double number) { return std::isfinite(number); };
    if (!std::ranges::all_of(layout.origin, isFinite) ||
        !std::ranges::all_of(layout.spacing, isFinite) ||
        !std::ranges::all_of(layout.direction, isFinite))
        throw runtime_error("origin, spacing or direction of the grid is not finite");
    for (std::size_t axis = 0; axis < layout.size.size(); ++axis)
    {
        if (axis < D ? layout.size[axis] > 1 && layout.spacing[axis] == 0.0 : layout.size[axis] > 1)
            throw runtime_error("axis " + std::to_string(axis) +
                                " of the grid has several points at one position");
    }
}

template<std::size_t D>
typename UniformGrid<D>::Point UniformGrid<D>::point(std::size_t index) const
{
    const GridSize indices = this->pointIndices(index);
    Point offsets;
    for (std::size_t axis = 0; axis < D; ++axis)
        offsets[axis] = offset(axis, indices[axis]);
    return pointAt(offsets);
}

template<std::size_t D>
std::span<const typename UniformGrid<D>::Point> UniformGrid<D>::points(
    std::size_t first, std::span<Point> scratch) const
{
    for (std::size_t done = 0; done < scratch.size();)
    {
        // The points up to the end of the row.
        const GridSize indices = this->pointIndices(first + done);
        const std::size_t count = std::min(scratch.size() - done, mLayout.size[0] - indices[0]);
        Point offsets;
        for (std::size_t axis = 1; axis < D; ++axis)
            offsets[axis] = offset(axis, indices[axis]);
        for (std::size_t i = 0; i < count; ++i)
        {
            offsets[0] = offset(0, indices[0] + i);
            scratch[done++] = pointAt(offsets);
        }
    }
    return scratch;
}

template<std::size_t D>
bool UniformGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const UniformGrid*>(&other);
    return grid != nullptr && mLayout == grid->mLayout;
}

template class UniformGrid<1>;
template class UniformGrid<2>;
template class UniformGrid<3>;

}
