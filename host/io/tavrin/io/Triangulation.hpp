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

/// Cuts a polygon, in whichever plane it lies, into triangles of its corners.
///
/// A convex polygon becomes a fan from its lowest-numbered corner, so that both cells that share it
/// as a face cut it alike. A concave polygon is cut by ear clipping. A polygon that crosses itself,
/// which has no right answer, becomes a fan as well, and so does a concave one of more than 10000
/// corners, to bound the time. Throws `Aborted`.
std::vector<Triangle> triangulate(std::span<const std::int64_t> corners, const PositionOf& position,
                                  const volatile bool& abortFlag);

/// Whether a polyhedron lies on one side of each of its faces, up to a hundredth of its extent on
/// that side, because the faces of real meshes are not exactly flat. Throws `Aborted`.
bool isConvex(std::span<const std::vector<std::int64_t>> faces, const PositionOf& position,
              const volatile bool& abortFlag);

/// Cuts a polyhedron into tetrahedra: from its lowest-numbered corner to the triangles of all faces
/// that do not touch it. Tetrahedra without volume are left out. The tetrahedra fill a convex
/// polyhedron exactly, and every other one whose interior is visible from that corner. Throws
/// `Aborted`.
std::vector<Tetrahedron> decompose(std::span<const std::vector<std::int64_t>> faces,
                                   const PositionOf& position, const volatile bool& abortFlag);

}
