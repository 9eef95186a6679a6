#pragma once

#include <tavrin/field/Field.hpp>

namespace tavrin
{

/// A function on a grid as a field. Values on points are interpolated in the cell at the position by the
/// shape functions of the cell's type; values on cells are constant in each cell. Outside of all cells
/// the field has no value, except where the function reaches, see `FunctionBase::reach`. Between two time steps values are interpolated linearly.
template<std::size_t D, Value T>
class TAVRIN_API FunctionField final : public Field<D, T>
{
public:
    /// Whether the function lives on the points or cells of a grid of this dimension.
    static bool accepts(const Function<T>& function);

    /// The function must be accepted.
    explicit FunctionField(const Function<T>& function);

    std::unique_ptr<FieldEvaluator<D, T>> makeEvaluator() const override;
    std::unique_ptr<BatchEvaluator<D, T>> makeBatchEvaluator() const override;

    std::string name() const override { return mFunction.name(); }
    TimeRange timeRange() const override;
    PointSetBase::BoundingBox boundingBox() const override { return mGrid->boundingBox(); }

private:
    /// The locator, which the first call makes if the function reaches.
    const CellLocator<D>& locator() const;

    bool isOnPoints() const { return mFunction.domainPart() == PointSetBase::Points; }

    // A copy, which shares domain and values with the original.
    Function<T> mFunction;
    const EmbeddedCellComplex<D>* mGrid;
    mutable std::once_flag mReachingLocatorOnce;
    mutable std::shared_ptr<const CellLocator<D>> mReachingLocator;
};

}
