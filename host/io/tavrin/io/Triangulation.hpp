#pragma once

#include <tavrin/value/Tensor.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tavrin::io
{

/// The position of a point of the grid.
using PositionOf = std::function<Vector3(std::int64_t point)>;

using Triangle = std::array<std::int64_t, 3>;
using Tetrahedron = std::array<std::int64_t, 4>;

/// Whether a polygon turns the same way at every corner, and around only once.
bool isConvex(std::span<const std::int64_t> corners, const PositionOf& position);

/// Triangles between the corners of a polygon, in whichever plane it lies.
///
/// A convex polygon becomes a fan from its lowest-numbered corner, so that both cells which share
/// it as a face cut it alike. A concave one is cut by clipping ears. One that crosses itself, or
/// has more than 10000 corners without being convex, becomes a fan as well: there is no right
/// answer for the one and none in good time for the other.
std::vector<Triangle> triangulate(std::span<const std::int64_t> corners,
                                  const PositionOf& position);

/// Whether a polyhedron lies on one side of each of its faces, but for a hundredth of how far it
/// reaches on that side: faces in real meshes are a little bent.
bool isConvex(std::span<const std::vector<std::int64_t>> faces, const PositionOf& position);

/// Tetrahedra between the corners of a polyhedron: from its lowest-numbered corner to the triangles
/// of all faces that do not touch it, those without volume left out. That fills a convex polyhedron
/// exactly, and every other that can be seen as a whole from that corner.
std::vector<Tetrahedron> decompose(std::span<const std::vector<std::int64_t>> faces,
                                   const PositionOf& position);

}
