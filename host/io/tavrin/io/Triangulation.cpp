#include <tavrin/io/Triangulation.hpp>

#include <algorithm>
#include <cmath>

namespace tavrin::io
{

namespace
{

constexpr std::size_t mostCornersToClip = 10000;

std::vector<Vector3> positionsOf(std::span<const std::int64_t> points, const PositionOf& position)
{
    std::vector<Vector3> positions;
    positions.reserve(points.size());
    for (const std::int64_t point : points)
        positions.push_back(position(point));
    return positions;
}

/// The normal of a polygon, which need not be quite flat, twice as long as its area (Newell).
Vector3 normalOf(const std::vector<Vector3>& corners)
{
    Vector3 normal{};
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const Vector3 a = corners[i] - corners[0];
        const Vector3 b = corners[(i + 1) % corners.size()] - corners[0];
        normal += cross(a, b);
    }
    return normal;
}

/// A polygon seen along its normal: its corners in the plane, counter-clockwise.
class FlatPolygon
{
public:
    FlatPolygon(std::span<const std::int64_t> points, const PositionOf& position)
    {
        const std::vector<Vector3> corners = positionsOf(points, position);
        const Vector3 normal = normalOf(corners);
        // Dropping the coordinate in which the normal is longest keeps the shape best.
        std::size_t dropped = 0;
        for (std::size_t k = 1; k < 3; ++k)
            if (std::abs(normal[k]) > std::abs(normal[dropped]))
                dropped = k;
        std::size_t first = (dropped + 1) % 3;
        std::size_t second = (dropped + 2) % 3;
        if (normal[dropped] < 0.0)
            std::swap(first, second);
        for (const Vector3& corner : corners)
            mCorners.push_back({corner[first], corner[second]});
    }

    /// Twice the area of a triangle of corners, negative where they turn clockwise.
    double area(std::size_t a, std::size_t b, std::size_t c) const
    {
        const auto& [ax, ay] = mCorners[a];
        const auto& [bx, by] = mCorners[b];
        const auto& [cx, cy] = mCorners[c];
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
    }

    bool isInside(std::size_t corner, std::size_t a, std::size_t b, std::size_t c) const
    {
        return area(a, b, corner) >= 0.0 && area(b, c, corner) >= 0.0 && area(c, a, corner) >= 0.0;
    }

    std::size_t size() const { return mCorners.size(); }

    /// Whether it turns the same way at every corner, and around only once.
    bool isConvex() const
    {
        std::size_t turns = 0;
        for (std::size_t i = 0; i < size(); ++i)
        {
            const std::size_t next = (i + 1) % size();
            if (area(i, next, (i + 2) % size()) < 0.0)
                return false;
            // A star turns one way too, but changes its horizontal direction more than twice.
            const std::size_t afterNext = (i + 2) % size();
            const bool goesRight = mCorners[next][0] >= mCorners[i][0];
            const bool goesRightNext = mCorners[afterNext][0] >= mCorners[next][0];
            turns += goesRight != goesRightNext ? 1 : 0;
        }
        return turns <= 2;
    }

private:
    std::vector<std::array<double, 2>> mCorners;
};

using IndexTriangle = std::array<std::size_t, 3>;

/// Cuts off one corner after the other; gives up, with no triangles, where none can be cut off.
std::vector<IndexTriangle> clipEars(const FlatPolygon& polygon)
{
    std::vector<IndexTriangle> triangles;
    std::vector<std::size_t> left(polygon.size());
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = i;
    std::size_t candidate = 0;
    std::size_t refused = 0;
    while (left.size() > 3)
    {
        if (refused == left.size())
            return {};
        const std::size_t count = left.size();
        candidate %= count;
        const std::size_t before = left[(candidate + count - 1) % count];
        const std::size_t tip = left[candidate];
        const std::size_t after = left[(candidate + 1) % count];
        const auto isInTheWay = [&](std::size_t corner)
        {
            return corner != before && corner != tip && corner != after &&
                   polygon.isInside(corner, before, tip, after);
        };
        if (polygon.area(before, tip, after) > 0.0 && std::ranges::none_of(left, isInTheWay))
        {
            triangles.push_back({before, tip, after});
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(candidate));
            refused = 0;
        }
        else
        {
            ++candidate;
            ++refused;
        }
    }
    triangles.push_back({left[0], left[1], left[2]});
    return triangles;
}

}

bool isConvex(std::span<const std::int64_t> corners, const PositionOf& position)
{
    return FlatPolygon(corners, position).isConvex();
}

bool isConvex(std::span<const std::vector<std::int64_t>> faces, const PositionOf& position)
{
    constexpr double bend = 0.01;
    return std::ranges::all_of(
        faces,
        [&](const std::vector<std::int64_t>& face)
        {
            const auto corners = positionsOf(face, position);
            const Vector3 normal = normalOf(corners);
            // How far the polyhedron reaches before the face and behind it.
            double before = 0.0;
            double behind = 0.0;
            for (const auto& other : faces)
                for (const std::int64_t point : other)
                {
                    const double height = dot(normal, position(point) - corners.front());
                    before = std::max(before, height);
                    behind = std::max(behind, -height);
                }
            return std::min(before, behind) <= bend * std::max(before, behind);
        });
}

std::vector<Triangle> triangulate(std::span<const std::int64_t> corners, const PositionOf& position)
{
    const FlatPolygon polygon(corners, position);

    std::vector<Triangle> triangles;
    if (corners.size() > 3 && corners.size() <= mostCornersToClip && !polygon.isConvex())
        for (const auto& [a, b, c] : clipEars(polygon))
            triangles.push_back({corners[a], corners[b], corners[c]});
    if (!triangles.empty())
        return triangles;
    const auto lowest =
        static_cast<std::size_t>(std::ranges::min_element(corners) - corners.begin());
    const auto corner = [&](std::size_t i) { return corners[(lowest + i) % corners.size()]; };
    for (std::size_t i = 1; i + 1 < corners.size(); ++i)
        triangles.push_back({corner(0), corner(i), corner(i + 1)});
    return triangles;
}

std::vector<Tetrahedron> decompose(std::span<const std::vector<std::int64_t>> faces,
                                   const PositionOf& position)
{
    std::int64_t apex = std::numeric_limits<std::int64_t>::max();
    for (const auto& face : faces)
        apex = std::min(apex, std::ranges::min(face));

    std::vector<Tetrahedron> tetrahedra;
    const Vector3 top = position(apex);
    for (const auto& face : faces)
    {
        if (std::ranges::find(face, apex) != face.end())
            continue;
        for (const auto& [a, b, c] : triangulate(face, position))
        {
            const Vector3 u = position(a) - top;
            const Vector3 v = position(b) - top;
            const Vector3 w = position(c) - top;
            const double volume = dot(cross(u, v), w);
            const double reach = std::sqrt(dot(u, u) * dot(v, v) * dot(w, w));
            if (std::abs(volume) <= 1e-12 * reach)
                continue;
            if (volume > 0.0)
                tetrahedra.push_back({apex, a, b, c});
            else
                tetrahedra.push_back({apex, a, c, b});
        }
    }
    return tetrahedra;
}

}
