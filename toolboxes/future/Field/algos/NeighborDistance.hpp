#pragma once

#include <tavrin/domain/PointSet.hpp>

/// How far apart neighboring samples on a domain are, typically: the median length of the edges of
/// its cells, or for points without cells the distance at which as many would fill their bounding
/// box evenly. 0 where that is unknown, as for a single point.
///
/// Looks at a bounded number of elements, chosen all over the domain and always the same ones.
template<std::size_t D>
double typicalNeighborDistance(const tavrin::PointSet<D>& domain);

extern template double typicalNeighborDistance(const tavrin::PointSet<1>& domain);
extern template double typicalNeighborDistance(const tavrin::PointSet<2>& domain);
extern template double typicalNeighborDistance(const tavrin::PointSet<3>& domain);
