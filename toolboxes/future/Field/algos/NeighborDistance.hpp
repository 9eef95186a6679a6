#pragma once

#include <tavrin/domain/PointSet.hpp>

/// The typical distance between neighboring samples on a domain: the median length of the edges of
/// its cells, or for points without cells the median distance from a point to the nearest point at
/// another position. 0 if it is unknown, as for a single point.
///
/// Considers a bounded number of elements all over the domain, always the same ones. The time is
/// proportional to the number of points where there are no cells.
template<std::size_t D>
double typicalNeighborDistance(const tavrin::PointSet<D>& domain);

extern template double typicalNeighborDistance(const tavrin::PointSet<1>& domain);
extern template double typicalNeighborDistance(const tavrin::PointSet<2>& domain);
extern template double typicalNeighborDistance(const tavrin::PointSet<3>& domain);
