#include <tavrin/domain/StructuredGrid.hpp>

#include <tavrin/domain/structuredCorners.hpp>

namespace tavrin
{

namespace
{

constexpr std::array cellTypesByDimension{CellType::Points, CellType::Lines, CellType::Quads,
                                          CellType::Hexahedra};

}

template<std::size_t D>
StructuredGrid<D>::StructuredGrid(const GridSize& size) : mSize(size)
{
    std::size_t stride = 1;
    for (const std::size_t points : size)
    {
        if (points > 1)
            mAxes[mNumAxes++] = {points - 1, stride};
        mNumCells *= points > 1 ? points - 1 : points;
        stride *= points;
    }
    mCellType = cellTypesByDimension[mNumAxes];
}

template<std::size_t D>
Cell StructuredGrid<D>::cell(std::size_t index) const
{
    std::size_t corner = 0;
    for (std::size_t axis = 0; axis < mNumAxes; ++axis)
    {
        corner += index % mAxes[axis].cells * mAxes[axis].stride;
        index /= mAxes[axis].cells;
    }
    auto vertices = structuredCorners({mAxes[0].stride, mAxes[1].stride, mAxes[2].stride});
    for (std::size_t& vertex : vertices)
        vertex += corner;
    return {mCellType, std::span(vertices).first(numVerticesOf(mCellType))};
}

template<std::size_t D>
bool StructuredGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const StructuredGrid*>(&other);
    return grid != nullptr && mSize == grid->mSize && PointSet<D>::equals(other);
}

template<std::size_t D>
PointSetBase::BoundingBox StructuredGrid<D>::boundingBoxOfCorners() const
{
    if (numPoints() == 0)
        return PointSet<D>::findBoundingBox();
    const auto first = this->point(0);
    std::vector<std::pair<double, double>> bounds;
    for (std::size_t i = 0; i < D; ++i)
        bounds.emplace_back(first[i], first[i]);
    for (std::size_t corner = 1; corner < 8; ++corner)
    {
        std::size_t index = 0;
        std::size_t stride = 1;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            index += (corner >> axis & 1) * (mSize[axis] - 1) * stride;
            stride *= mSize[axis];
        }
        const auto point = this->point(index);
        for (std::size_t i = 0; i < D; ++i)
            bounds[i] = {std::min(bounds[i].first, point[i]), std::max(bounds[i].second, point[i])};
    }
    return PointSetBase::BoundingBox(std::move(bounds));
}

template class StructuredGrid<1>;
template class StructuredGrid<2>;
template class StructuredGrid<3>;

}
