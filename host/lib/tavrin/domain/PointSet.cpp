#include <tavrin/domain/PointSet.hpp>

#include <limits>
#include <typeinfo>

namespace tavrin
{

namespace
{

constexpr std::size_t pointsPerBlock = 1024;

}

std::size_t PointSetBase::numElements(const DomainPart& part) const
{
    return part == Points ? numPoints() : 0;
}

template<std::size_t D>
std::span<const typename PointSet<D>::Point> PointSet<D>::points(std::size_t first,
                                                                 std::span<Point> scratch) const
{
    for (std::size_t i = 0; i < scratch.size(); ++i)
        scratch[i] = point(first + i);
    return scratch;
}

template<std::size_t D>
PointSetBase::BoundingBox PointSet<D>::boundingBox() const
{
    std::call_once(mBoundingBoxOnce, [this] { mBoundingBox = findBoundingBox(); });
    return *mBoundingBox;
}

template<std::size_t D>
PointSetBase::BoundingBox PointSet<D>::findBoundingBox() const
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::vector<std::pair<double, double>> bounds(D, {infinity, -infinity});
    std::array<Point, pointsPerBlock> scratch;
    for (std::size_t first = 0; first < numPoints(); first += pointsPerBlock)
    {
        const auto count = std::min(pointsPerBlock, numPoints() - first);
        for (const Point& point : points(first, std::span(scratch).first(count)))
            for (std::size_t i = 0; i < D; ++i)
            {
                bounds[i].first = std::min(bounds[i].first, point[i]);
                bounds[i].second = std::max(bounds[i].second, point[i]);
            }
    }
    return BoundingBox(std::move(bounds));
}

template<std::size_t D>
bool PointSet<D>::equals(const Domain& other) const
{
    if (this == &other)
        return true;
    const auto* const set = dynamic_cast<const PointSet*>(&other);
    if (set == nullptr || typeid(*this) != typeid(other) || numPoints() != set->numPoints())
        return false;
    std::array<Point, pointsPerBlock> scratch;
    std::array<Point, pointsPerBlock> otherScratch;
    for (std::size_t first = 0; first < numPoints(); first += pointsPerBlock)
    {
        const auto count = std::min(pointsPerBlock, numPoints() - first);
        if (!std::ranges::equal(points(first, std::span(scratch).first(count)),
                                set->points(first, std::span(otherScratch).first(count))))
            return false;
    }
    return true;
}

template class PointSet<1>;
template class PointSet<2>;
template class PointSet<3>;
template class PointCloud<1>;
template class PointCloud<2>;
template class PointCloud<3>;

}
