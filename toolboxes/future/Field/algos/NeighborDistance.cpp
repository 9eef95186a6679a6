#include "NeighborDistance.hpp"

#include <tavrin/domain/CellComplex.hpp>

#include <numbers>

namespace
{

using namespace tavrin;

constexpr std::size_t maximumCells = 800;
constexpr std::size_t maximumPoints = 10000;

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
    if (lengths.empty())
        return 0.0;
    const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
    std::ranges::nth_element(lengths, middle);
    return *middle;
}

template<std::size_t D>
double evenDistance(const PointSet<D>& points)
{
    auto lower = points.numPoints() == 0 ? Tensor<double, D>{} : points.point(0);
    auto upper = lower;
    forSample(points.numPoints(), maximumPoints,
              [&](std::size_t index)
              {
                  const auto point = points.point(index);
                  for (std::size_t i = 0; i < D; ++i)
                  {
                      lower[i] = std::min(lower[i], point[i]);
                      upper[i] = std::max(upper[i], point[i]);
                  }
              });
    // Points in a plane or on a line fill no volume: only the axes along which they differ count.
    double axes = 0.0;
    double product = 1.0;
    for (std::size_t i = 0; i < D; ++i)
        if (upper[i] > lower[i])
        {
            axes += 1.0;
            product *= upper[i] - lower[i];
        }
    if (axes == 0.0)
        return 0.0;
    const double pointsPerAxis = std::pow(static_cast<double>(points.numPoints()), 1.0 / axes);
    return std::pow(product, 1.0 / axes) / std::max(1.0, pointsPerAxis - 1.0);
}

}

template<std::size_t D>
double typicalNeighborDistance(const PointSet<D>& domain)
{
    const auto* const complex = dynamic_cast<const EmbeddedCellComplex<D>*>(&domain);
    const double distance = complex == nullptr ? 0.0 : medianEdgeLength(*complex);
    return distance > 0.0 ? distance : evenDistance(domain);
}

template double typicalNeighborDistance(const PointSet<1>& domain);
template double typicalNeighborDistance(const PointSet<2>& domain);
template double typicalNeighborDistance(const PointSet<3>& domain);
