#pragma once

#include <tavrin/domain/StructuredGrid.hpp>

namespace tavrin
{

/// A grid defined by the coordinates along each axis, from which its points are computed.
template<std::size_t D>
class TAVRIN_API RectilinearGrid final : public StructuredGrid<D>
{
public:
    using typename PointSet<D>::Point;
    using Coordinates = std::array<std::vector<double>, D>;

    /// The coordinates of each axis must be finite and strictly monotonic, ascending or
    /// descending; throws `runtime_error` otherwise. `precision` is the one that they were stored in.
    explicit RectilinearGrid(Coordinates coordinates, Precision precision = Precision::Float64);

    const Coordinates& coordinates() const { return mCoordinates; }

    Point point(std::size_t index) const override;
    Precision coordinatePrecision() const override { return mPrecision; }
    StructuringType structuringType() const override { return StructuringType::Rectilinear; }
    bool equals(const Domain& other) const override;

    static const TypeId<RectilinearGrid>& classTypeId()
    {
        return RTTI::typeId<RectilinearGrid, StructuredGrid<D>>(
            "RectilinearGrid<" + std::to_string(D) + ">",
            std::to_string(D) + "-D rectilinear grid");
    }

protected:
    PointSetBase::BoundingBox findBoundingBox() const override
    {
        return this->boundingBoxOfCorners();
    }

private:
    Coordinates mCoordinates;
    Precision mPrecision;
};

extern template class RectilinearGrid<1>;
extern template class RectilinearGrid<2>;
extern template class RectilinearGrid<3>;

}
