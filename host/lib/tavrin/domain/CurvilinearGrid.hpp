#pragma once

#include <tavrin/domain/StructuredGrid.hpp>

namespace tavrin
{

/// A structured grid with stored points.
template<std::size_t D>
class TAVRIN_API CurvilinearGrid final : public StructuredGrid<D>
{
public:
    using typename PointSet<D>::Point;

    /// Points are numbered fastest along the first axis. Throws `runtime_error` where their number does
    /// not match the size.
    CurvilinearGrid(const GridSize& size, std::shared_ptr<const ValueArray<Point>> points);

    Precision coordinatePrecision() const override { return mPoints->precision(); }
    Point point(std::size_t index) const override { return (*mPoints)[index]; }
    std::span<const Point> points(std::size_t first, std::span<Point> scratch) const override
    {
        return mPoints->read(first, scratch);
    }
    StructuringType structuringType() const override { return StructuringType::Curvilinear; }

    static const TypeId<CurvilinearGrid>& classTypeId()
    {
        return RTTI::typeId<CurvilinearGrid, StructuredGrid<D>>(
            "CurvilinearGrid<" + std::to_string(D) + ">",
            std::to_string(D) + "-D curvilinear grid");
    }

private:
    std::shared_ptr<const ValueArray<Point>> mPoints;
};

extern template class CurvilinearGrid<1>;
extern template class CurvilinearGrid<2>;
extern template class CurvilinearGrid<3>;

}
