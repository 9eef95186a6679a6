#pragma once

#include <tavrin/value/Precision.hpp>

#include <algorithm>
#include <limits>

namespace tavrin
{

/// How far outside a cell a position may lie and still belong to it, in units of the cell's reference
/// coordinates, which are of the order of 1. For a cell of fewer dimensions than the space it is also
/// the distance from the cell, in units of its smallest extent at the position.
inline constexpr double locationTolerance = 1e-9;

/// The rounding of a coordinate relative to its size: four units in the last place, as many as the mean of
/// a few vertices may be off.
///
/// Where the rounding of the position (on uniform grids: of the largest coordinate of the grid) is larger
/// than `locationTolerance`, it is the tolerance instead, up to `largestTolerance`. The rounding is that
/// of the precision in which the grid's coordinates are stored; those of uniform grids are computed in
/// double precision.
inline constexpr double coordinateRounding = 4.0 * std::numeric_limits<double>::epsilon();
inline constexpr double largestTolerance = 1e-3;

/// The rounding of coordinates that are stored in a precision. Integers are exact and only rounded by
/// computing with them.
constexpr double roundingOf(Precision precision)
{
    return precision == Precision::Float32
               ? 4.0 * static_cast<double>(std::numeric_limits<float>::epsilon())
               : coordinateRounding;
}

/// The tolerance in reference coordinates in a cell of a given size whose coordinates are rounded by
/// up to `rounding`.
inline double toleranceIn(double size, double rounding)
{
    return std::max(locationTolerance, std::min(largestTolerance, rounding / size));
}

}
