#include <tavrin/domain/StructuredGrid.hpp>

namespace tavrin
{

template<std::size_t D>
Cell StructuredGrid<D>::cell(std::size_t index) const
{
    const std::size_t first = mNumbering.firstVertexOf(index);
    auto vertices = mNumbering.cornerOffsets();
    for (std::size_t& vertex : vertices)
        vertex += first;
    const CellType type = mNumbering.cellType();
    return {type, std::span(vertices).first(numVerticesOf(type))};
}

template<std::size_t D>
bool StructuredGrid<D>::equals(const Domain& other) const
{
    const auto* const grid = dynamic_cast<const StructuredGrid*>(&other);
    return grid != nullptr && size() == grid->size() && PointSet<D>::equals(other);
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
    const auto axes = mNumbering.axes();
    for (std::size_t corner = 1; corner < std::size_t{1} << axes.size(); ++corner)
    {
        std::size_t index = 0;
        for (std::size_t i = 0; i < axes.size(); ++i)
            index += (corner >> i & 1) * axes[i].cells * axes[i].pointStride;
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
