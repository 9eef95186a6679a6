#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tavrin::io
{

/// A polygon in a plane, with its corners in counter-clockwise order.
class FlatPolygon
{
public:
    explicit FlatPolygon(std::vector<std::array<double, 2>> corners) : mCorners(std::move(corners))
    {
    }

    std::size_t size() const { return mCorners.size(); }

    /// Twice the area of a triangle of corners; negative if they are in clockwise order.
    double area(std::size_t a, std::size_t b, std::size_t c) const
    {
        const auto& [ax, ay] = mCorners[a];
        const auto& [bx, by] = mCorners[b];
        const auto& [cx, cy] = mCorners[c];
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
    }

    /// Whether a corner is in the triangle of others, or on its boundary.
    bool isInside(std::size_t corner, std::size_t a, std::size_t b, std::size_t c) const
    {
        return area(a, b, corner) >= 0.0 && area(b, c, corner) >= 0.0 && area(c, a, corner) >= 0.0;
    }

    /// Whether the polygon turns the same way at every corner, and around only once.
    bool isConvex() const;

private:
    std::vector<std::array<double, 2>> mCorners;
};

/// Cuts a polygon into triangles of its corners. Returns none where that fails, which happens for
/// polygons that cross themselves. Throws `Aborted`.
std::vector<std::array<std::size_t, 3>> clipEars(const FlatPolygon& polygon,
                                                 const volatile bool& abortFlag);

}
