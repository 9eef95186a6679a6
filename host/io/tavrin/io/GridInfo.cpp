#include <tavrin/io/GridInfo.hpp>

#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/function/visit.hpp>

namespace tavrin::io
{

namespace
{

template<std::size_t D>
void describe(const PointSet<D>& points, FileInfo& info)
{
    info.dimension = D;
    info.points = points.numPoints();
    const auto* const grid = dynamic_cast<const EmbeddedCellComplex<D>*>(&points);
    info.structuring = grid == nullptr ? StructuringType::Unstructured : grid->structuringType();
    info.cells = grid == nullptr ? 0 : grid->numCells();
    const auto* const structured = dynamic_cast<const StructuredGrid<D>*>(&points);
    if (structured != nullptr)
        info.size = structured->size();
    if (structured != nullptr && structured->numCells() > 0)
        info.cellTypes[structured->cellType(0)] = structured->numCells();
    else
        for (std::size_t cell = 0; cell < info.cells; ++cell)
            ++info.cellTypes[grid->cellType(cell)];

    if (info.points == 0)
        return;
    const PointSetBase::BoundingBox box = points.boundingBox();
    for (std::size_t i = 0; i < D; ++i)
        info.bounds.push_back(box[i]);
}

}

void describeGrid(const Domain& domain, FileInfo& info)
{
    visitObject<TypeList<PointSet<1>, PointSet<2>, PointSet<3>>>(domain, [&](const auto& points)
                                                                 { describe(points, info); });
}

}
