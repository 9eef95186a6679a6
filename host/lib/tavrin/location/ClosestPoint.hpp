#pragma once

#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/value/Tensor.hpp>

#include <optional>

namespace tavrin
{

/// A point of a cell, and its distance from the position that it is closest to.
struct ClosestPoint
{
    Reference at;
    double distance;
};

/// The point of a cell that is closest to a position, if it is not farther than `limit`, which may be
/// infinite. Of several equally close points the result is one of them.
///
/// `type` is one that `geometryTypeOf` returns. Computed in closed form for vertices, lines and triangles.
/// Other cells are divided into parts, a quarter as long as the cell; in each part that may hold a closer
/// point than those found before, the Levenberg-Marquardt method [1] starts from the middle.
///
/// [1] K. Levenberg, A method for the solution of certain non-linear problems in least squares,
///     Quart. Appl. Math. 2 (1944)
template<std::size_t D>
std::optional<ClosestPoint> closestPoint(CellType type, const Tensor<double, D>* vertices,
                                         const Tensor<double, D>& position, double limit);

}
