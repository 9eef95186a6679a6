#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/location/GridCells.hpp>
#include <tavrin/location/Inverse.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tavrin
{

/// The coordinates of a tree of cells, in single precision: relative to the middle of the grid, in units
/// of about its size.
template<std::size_t D>
class TreeSpace
{
public:
    using Position = Tensor<double, D>;

    struct Mapped
    {
        std::array<double, D> exact;
        std::array<float, D> rounded;
    };

    TreeSpace() = default;
    explicit TreeSpace(const GridCells<D>& cells)
    {
        // Going by the inner three quarters of the points keeps a few outliers, such as a mark for missing
        // coordinates, from making all other cells too small for single precision.
        const Box<D>& most = cells.boxOfMost();
        mOrigin = 0.5 * (most.lower + most.upper);
        double spread = maximumNorm(most.upper - most.lower);
        if (spread == 0.0)
            spread = maximumNorm(0.5 * cells.box().upper - 0.5 * cells.box().lower);
        if (spread > 0.0)
            mUnit = std::ldexp(1.0, -std::ilogb(spread));
    }

    /// The factor from distances to mapped distances.
    double unit() const { return mUnit; }

    /// A mapped coordinate. The map is monotonic, rounding included: a position inside a box is inside
    /// the mapped box.
    float map(std::size_t axis, double coordinate) const
    {
        // Outliers are limited to the range of single precision, below infinite coordinates.
        const double kept = std::clamp(mapExactly(axis, coordinate), -farthest, farthest);
        return static_cast<float>(std::isfinite(coordinate) ? kept : coordinate);
    }

    Mapped map(const Position& position) const
    {
        Mapped mapped;
        for (std::size_t i = 0; i < D; ++i)
        {
            mapped.exact[i] = mapExactly(i, position[i]);
            mapped.rounded[i] = map(i, position[i]);
        }
        return mapped;
    }

    /// Extends a box so that it holds everything that `map` maps into a range of an axis.
    void addOriginals(std::size_t axis, double lower, double upper, Box<D>& box) const
    {
        // Rounding to single precision may have moved the bounds inward.
        constexpr double rounding = std::numeric_limits<float>::epsilon();
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr double far = 0.99 * farthest;
        const double least = mOrigin[axis] + (lower - rounding * std::abs(lower)) / mUnit;
        const double most = mOrigin[axis] + (upper + rounding * std::abs(upper)) / mUnit;
        box.lower[axis] = std::min(box.lower[axis], lower < -far ? -infinity : least);
        box.upper[axis] = std::max(box.upper[axis], upper > far ? infinity : most);
    }

private:
    /// Mapped coordinates are limited to this, well below the largest number in single precision, so that
    /// sums and differences of a few of them do not overflow.
    static constexpr double farthest = 1e37;

    double mapExactly(std::size_t axis, double coordinate) const
    {
        return (coordinate - mOrigin[axis]) * mUnit;
    }

    Position mOrigin{};
    double mUnit = 1.0;
};

}
