#pragma once

#include <tavrin/domain/Domain.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <mutex>
#include <optional>
#include <span>
#include <utility>

namespace tavrin
{

/// A set of points, whatever its dimension.
class TAVRIN_API PointSetBase : public virtual Domain
{
public:
    /// One value per point.
    static constexpr DomainPart Points{"Points"};

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

    /// Found on the first call and kept. A set without points has the bounds (+inf, -inf).
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

    std::size_t dimension() const final { return D; }
    BoundingBox boundingBox() const final;

    /// Point sets are equal when they are of the same kind and have the same points in the same
    /// order; kinds that compute their points compare what they compute them from.
    bool equals(const Domain& other) const override;

    static const TypeId<PointSet>& classTypeId()
    {
        return RTTI::typeId<PointSet, PointSetBase>("PointSet<" + std::to_string(D) + ">",
                                                    std::to_string(D) + "-D grid or point set");
    }

protected:
    /// Looks at all points, unless a kind of grid knows better.
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
