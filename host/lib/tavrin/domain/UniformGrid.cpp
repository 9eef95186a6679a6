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
    Point position = mLayout.origin;
    Point offset;
    for (std::size_t axis = 0; axis < D; ++axis)
        offset[axis] =
            static_cast<double>(mLayout.firstIndex[axis] + static_cast<long>(indices[axis])) *
            mLayout.spacing[axis];
    return mIsOriented ? position + multiply(mLayout.direction, offset) : position + offset;
}

template<std::size_t D>
bool UniformGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const UniformGrid*>(&other);
    return grid != nullptr && mLayout == grid->mLayout;
}

template<std::size_t D>
const RTTI_TypeId& UniformGrid<D>::classTypeId()
{
    static const RTTI_TypeId id = RTTI::newTypeId("UniformGrid<" + std::to_string(D) + ">");
    return id;
}

template<std::size_t D>
bool UniformGrid<D>::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId() || EmbeddedCellComplex<D>::isA(id);
}

template class UniformGrid<1>;
template class UniformGrid<2>;
template class UniformGrid<3>;

}
