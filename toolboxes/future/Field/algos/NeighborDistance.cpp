#include "NeighborDistance.hpp"

#include <tavrin/domain/CellComplex.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace
{

using namespace tavrin;

constexpr std::size_t maximumCells = 800;
/// The number of distances that are computed between points without cells.
constexpr std::size_t maximumDistances = 10'000'000;

/// Calls `visit` for all indices below `size`, or for `maximum` of them that follow no pattern of
/// a grid.
template<typename Visit>
void forSample(std::size_t size, std::size_t maximum, const Visit& visit)
{
    if (size <= maximum)
        for (std::size_t i = 0; i < size; ++i)
            visit(i);
    else
        for (std::size_t i = 0; i < maximum; ++i)
        {
            const double turns = static_cast<double>(i) * std::numbers::phi;
            const double share = turns - std::floor(turns);
            visit(std::min(static_cast<std::size_t>(share * static_cast<double>(size)), size - 1));
        }
}

double medianOf(std::vector<double>& numbers)
{
    if (numbers.empty())
        return 0.0;
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::ranges::nth_element(numbers, middle);
    return *middle;
}

template<std::size_t D>
double medianEdgeLength(const EmbeddedCellComplex<D>& complex)
{
    std::vector<double> lengths;
    forSample(complex.numCells(), maximumCells,
              [&](std::size_t index)
              {
                  const Cell cell = complex.cell(index);
                  for (const auto& [from, to] : edgesOf(cell.type()))
                  {
                      const double length = norm(complex.point(cell.pointIndex(to)) -
                                                 complex.point(cell.pointIndex(from)));
                      if (std::isfinite(length) && length > 0.0)
                          lengths.push_back(length);
                  }
              });
    return medianOf(lengths);
}

/// The median distance of some points from the nearest point at another position.
template<std::size_t D>
double medianNearestDistance(const PointSet<D>& points)
{
    const std::size_t numPoints = points.numPoints();
    const std::size_t numSamples =
        std::clamp<std::size_t>(maximumDistances / std::max<std::size_t>(numPoints, 1), 8, 400);
    std::vector<double> distances;
    forSample(numPoints, numSamples,
              [&](std::size_t index)
              {
                  const auto position = points.point(index);
                  double nearest = std::numeric_limits<double>::infinity();
                  for (std::size_t i = 0; i < numPoints; ++i)
                      if (const double distance = norm(points.point(i) - position);
                          distance > 0.0 && distance < nearest)
                          nearest = distance;
                  if (std::isfinite(nearest))
                      distances.push_back(nearest);
              });
    return medianOf(distances);
}

}

template<std::size_t D>
double typicalNeighborDistance(const PointSet<D>& domain)
{
    const auto* const complex = dynamic_cast<const EmbeddedCellComplex<D>*>(&domain);
    const double distance = complex == nullptr ? 0.0 : medianEdgeLength(*complex);
    return distance > 0.0 ? distance : medianNearestDistance(domain);
}

template double typicalNeighborDistance(const PointSet<1>& domain);
template double typicalNeighborDistance(const PointSet<2>& domain);
template double typicalNeighborDistance(const PointSet<3>& domain);
