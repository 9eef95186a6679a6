#pragma once

#include <tavrin/domain/StructuredGrid.hpp>

namespace tavrin
{

/// The unit matrix.
template<std::size_t D>
constexpr Tensor<double, D, D> unitMatrix()
{
    Tensor<double, D, D> matrix{};
    for (std::size_t i = 0; i < D; ++i)
        matrix(i, i) = 1.0;
    return matrix;
}

/// A grid with a constant distance between neighboring points along each axis. The points are
/// computed: origin + direction * ((firstIndex + index) * spacing).
template<std::size_t D>
class TAVRIN_API UniformGrid final : public StructuredGrid<D>
{
public:
    using typename PointSet<D>::Point;

    struct Layout
    {
        /// The number of points along each axis; 1 from axis D on.
        GridSize size{1, 1, 1};
        Point origin{};
        /// The distance of neighboring points: finite, and not 0 along an axis with several points.
        Point spacing{};
        /// The index of the first point along each axis.
        std::array<long, D> firstIndex{};
        /// The columns are the directions of the index axes. By default they are the coordinate axes.
        Tensor<double, D, D> direction = unitMatrix<D>();

        bool operator==(const Layout&) const = default;
    };

    /// Throws `runtime_error` for numbers that are not finite and for several points at one position.
    explicit UniformGrid(const Layout& layout);

    const Layout& layout() const { return mLayout; }

    /// Whether the index axes differ from the coordinate axes.
    bool isOriented() const { return mIsOriented; }

    Point point(std::size_t index) const override;
    std::span<const Point> points(std::size_t first, std::span<Point> scratch) const override;
    StructuringType structuringType() const override { return StructuringType::Uniform; }
    bool equals(const Domain& other) const override;

    static const TypeId<UniformGrid>& classTypeId()
    {
        return RTTI::typeId<UniformGrid, StructuredGrid<D>>(
            "UniformGrid<" + std::to_string(D) + ">", std::to_string(D) + "-D uniform grid");
    }

protected:
    PointSetBase::BoundingBox findBoundingBox() const override
    {
        return this->boundingBoxOfCorners();
    }

private:
    /// The offset from the origin along an index axis.
    double offset(std::size_t axis, std::size_t index) const
    {
        return static_cast<double>(mLayout.firstIndex[axis] + static_cast<long>(index)) *
               mLayout.spacing[axis];
    }

    Point pointAt(const Point& offset) const
    {
        return mIsOriented ? mLayout.origin + multiply(mLayout.direction, offset)
                           : mLayout.origin + offset;
    }

    Layout mLayout;
    bool mIsOriented;
};

extern template class UniformGrid<1>;
extern template class UniformGrid<2>;
extern template class UniformGrid<3>;

}
