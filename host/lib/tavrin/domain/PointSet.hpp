#pragma once

#include <tavrin/domain/Domain.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <mutex>
#include <optional>
#include <span>
#include <utility>

namespace tavrin
{

/// A set of points of any dimension.
class TAVRIN_API PointSetBase : public virtual Domain
{
public:
    /// One value per point.
    static inline const DomainPart Points{"Points"};

    /// The smallest axis-parallel box around all points.
    class BoundingBox
    {
    public:
        /// Lower and upper bound of each coordinate.
        explicit BoundingBox(std::vector<std::pair<double, double>> bounds)
            : mBounds(std::move(bounds))
        {
        }

        /// The number of coordinates.
        std::size_t getDimensions() const { return mBounds.size(); }
        const std::pair<double, double>& operator[](std::size_t coordinate) const
        {
            return mBounds[coordinate];
        }

    private:
        std::vector<std::pair<double, double>> mBounds;
    };

    virtual std::size_t numPoints() const = 0;

    /// The number of coordinates of a point: 1, 2 or 3.
    virtual std::size_t dimension() const = 0;

    /// The box around all points, computed on the first call. Without points its bounds are +inf, -inf.
    virtual BoundingBox boundingBox() const = 0;

    std::size_t numElements(const DomainPart& part) const override;

    static const TypeId<PointSetBase>& classTypeId()
    {
        return typeId<PointSetBase, Domain>("PointSetBase", "grid or point set");
    }
};

/// Points with D coordinates. Implementations either store or compute them.
template<std::size_t D>
class TAVRIN_API PointSet : public PointSetBase
{
    static_assert(D >= 1 && D <= 3);

public:
    using Point = Tensor<double, D>;

    /// The point at an index below `numPoints()`.
    virtual Point point(std::size_t index) const = 0;

    /// The points first ... first + scratch.size() - 1, as `ValueArray::read` delivers values.
    virtual std::span<const Point> points(std::size_t first, std::span<Point> scratch) const;

    /// The precision in which coordinates are stored, and to which positions can be computed from them.
    virtual Precision coordinatePrecision() const { return Precision::Float64; }

    std::size_t dimension() const final { return D; }
    BoundingBox boundingBox() const final;

    /// Point sets are equal if they are of the same kind and have the same points in the same order. Kinds
    /// that compute their points compare the parameters of the computation.
    bool equals(const Domain& other) const override;

    static const TypeId<PointSet>& classTypeId()
    {
        return RTTI::typeId<PointSet, PointSetBase>("PointSet<" + std::to_string(D) + ">",
                                                    std::to_string(D) + "-D grid or point set");
    }

protected:
    /// Reads all points; kinds of grid with a faster way override it.
    virtual BoundingBox findBoundingBox() const;

private:
    mutable std::once_flag mBoundingBoxOnce;
    mutable std::optional<BoundingBox> mBoundingBox;
};

/// Stored points without cells.
template<std::size_t D>
class TAVRIN_API PointCloud final : public PointSet<D>
{
public:
    using typename PointSet<D>::Point;

    explicit PointCloud(std::shared_ptr<const ValueArray<Point>> points)
        : mPoints(std::move(points))
    {
    }

    std::size_t numPoints() const override { return mPoints->size(); }
    Precision coordinatePrecision() const override { return mPoints->precision(); }
    Point point(std::size_t index) const override { return (*mPoints)[index]; }
    std::span<const Point> points(std::size_t first, std::span<Point> scratch) const override
    {
        return mPoints->read(first, scratch);
    }

    static const TypeId<PointCloud>& classTypeId()
    {
        return RTTI::typeId<PointCloud, PointSet<D>>("PointCloud<" + std::to_string(D) + ">",
                                                     std::to_string(D) + "-D point set");
    }

private:
    std::shared_ptr<const ValueArray<Point>> mPoints;
};

extern template class PointSet<1>;
extern template class PointSet<2>;
extern template class PointSet<3>;
extern template class PointCloud<1>;
extern template class PointCloud<2>;
extern template class PointCloud<3>;

}
