#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/CellTable.hpp>

namespace tavrin
{

/// A grid with stored points and listed cells of any types.
template<std::size_t D>
class TAVRIN_API UnstructuredGrid final : public EmbeddedCellComplex<D>
{
public:
    using typename PointSet<D>::Point;

    /// Throws what `CellTable::check` throws.
    UnstructuredGrid(std::shared_ptr<const ValueArray<Point>> points, CellTable cells);

    std::size_t numPoints() const override { return mPoints->size(); }
    Precision coordinatePrecision() const override { return mPoints->precision(); }
    Point point(std::size_t index) const override { return (*mPoints)[index]; }
    std::span<const Point> points(std::size_t first, std::span<Point> scratch) const override
    {
        return mPoints->read(first, scratch);
    }

    std::size_t numCells() const override { return mCells.types.size(); }
    Cell cell(std::size_t index) const override;
    CellType cellType(std::size_t index) const override { return mCells.types[index]; }
    const CellTable& cells() const { return mCells; }

    TopologyType topologyType() const override { return TopologyType::Unstructured; }
    StructuringType structuringType() const override { return StructuringType::Unstructured; }
    bool equals(const Domain& other) const override;

    static const TypeId<UnstructuredGrid>& classTypeId()
    {
        return RTTI::typeId<UnstructuredGrid, EmbeddedCellComplex<D>>(
            "UnstructuredGrid<" + std::to_string(D) + ">",
            std::to_string(D) + "-D unstructured grid");
    }

private:
    std::shared_ptr<const ValueArray<Point>> mPoints;
    CellTable mCells;
};

extern template class UnstructuredGrid<1>;
extern template class UnstructuredGrid<2>;
extern template class UnstructuredGrid<3>;

}
