#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/GridNumbering.hpp>

namespace tavrin
{

/// A grid whose points and cells are numbered along three index axes, as `GridNumbering` says.
template<std::size_t D>
class TAVRIN_API StructuredGrid : public EmbeddedCellComplex<D>
{
public:
    const GridNumbering& numbering() const { return mNumbering; }
    const GridSize& size() const { return mNumbering.size(); }

    std::size_t numPoints() const final { return mNumbering.numPoints(); }
    std::size_t numCells() const final { return mNumbering.numCells(); }
    CellType cellType(std::size_t) const final { return mNumbering.cellType(); }

    /// Vertices are in the order of the linear cell types.
    Cell cell(std::size_t index) const final;

    TopologyType topologyType() const final { return TopologyType::Structured; }

    /// The index along each axis of a point.
    GridSize pointIndices(std::size_t point) const { return mNumbering.indicesOf(point); }

    bool equals(const Domain& other) const override;

    static const TypeId<StructuredGrid>& classTypeId()
    {
        return RTTI::typeId<StructuredGrid, EmbeddedCellComplex<D>>(
            "StructuredGrid<" + std::to_string(D) + ">", std::to_string(D) + "-D structured grid");
    }

protected:
    /// Every axis needs at least one point; a grid without points has 0 on every axis.
    explicit StructuredGrid(const GridSize& size) : mNumbering(size) {}

    /// The bounding box of the eight corner points, for grids whose faces are flat.
    PointSetBase::BoundingBox boundingBoxOfCorners() const;

private:
    GridNumbering mNumbering;
};

extern template class StructuredGrid<1>;
extern template class StructuredGrid<2>;
extern template class StructuredGrid<3>;

}
