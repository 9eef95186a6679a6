#include <tavrin/domain/elementPosition.hpp>

namespace tavrin
{

namespace
{

template<std::size_t D>
bool findPosition(const Domain& domain, const DomainPart& part, std::size_t index,
                  std::vector<double>& position)
{
    const auto* const points = dynamic_cast<const PointSet<D>*>(&domain);
    if (points == nullptr)
        return false;
    const auto* const grid = dynamic_cast<const EmbeddedCellComplex<D>*>(points);
    if (part == PointSetBase::Points)
    {
        const auto point = points->point(index);
        position.assign(point.begin(), point.end());
    }
    else if (part == detail::Cells && grid != nullptr)
    {
        const auto center = centerOf(*grid, index);
        position.assign(center.begin(), center.end());
    }
    return true;
}

}

std::vector<double> elementPosition(const Domain& domain, const DomainPart& part, std::size_t index)
{
    std::vector<double> position;
    static_cast<void>(findPosition<1>(domain, part, index, position) ||
                      findPosition<2>(domain, part, index, position) ||
                      findPosition<3>(domain, part, index, position));
    return position;
}

}
