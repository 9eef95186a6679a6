#include <tavrin/io/Triangulation.hpp>

#include <tavrin/io/EarClipping.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/PointTree.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavrin::io
{

namespace
{

constexpr std::size_t maximumCornersToClip = 10000;

std::vector<Vector3> positionsOf(std::span<const std::int64_t> points, const PositionOf& position)
{
    std::vector<Vector3> positions;
    positions.reserve(points.size());
    for (const std::int64_t point : points)
        positions.push_back(position(point));
    return positions;
}

/// The normal of a polygon, which need not be exactly flat; its length is twice the area (Newell).
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

/// A polygon seen along its normal.
FlatPolygon flatten(std::span<const std::int64_t> points, const PositionOf& position)
{
    const std::vector<Vector3> corners = positionsOf(points, position);
    const Vector3 normal = normalOf(corners);
    // Dropping the largest coordinate of the normal distorts the shape least.
    std::size_t dropped = 0;
    for (std::size_t k = 1; k < 3; ++k)
        if (std::abs(normal[k]) > std::abs(normal[dropped]))
            dropped = k;
    std::size_t first = (dropped + 1) % 3;
    std::size_t second = (dropped + 2) % 3;
    if (normal[dropped] < 0.0)
        std::swap(first, second);
    std::vector<std::array<double, 2>> flat;
    flat.reserve(corners.size());
    for (const Vector3& corner : corners)
        flat.push_back({corner[first], corner[second]});
    return FlatPolygon(std::move(flat));
}

PointTree treeOf(std::span<const std::vector<std::int64_t>> faces, const PositionOf& position)
{
    std::vector<std::int64_t> points;
    for (const auto& face : faces)
        points.insert(points.end(), face.begin(), face.end());
    std::ranges::sort(points);
    const auto repeated = std::ranges::unique(points);
    points.erase(repeated.begin(), repeated.end());
    return PointTree(positionsOf(points, position));
}

}

bool isConvex(std::span<const std::int64_t> corners, const PositionOf& position)
{
    return flatten(corners, position).isConvex();
}

bool isConvex(std::span<const std::vector<std::int64_t>> faces, const PositionOf& position,
              const volatile bool& abortFlag)
{
    constexpr double bend = 0.01;
    const PointTree points = treeOf(faces, position);
    return std::ranges::all_of(faces,
                               [&](const std::vector<std::int64_t>& face)
                               {
                                   if (abortFlag)
                                       throw Aborted();
                                   const auto corners = positionsOf(face, position);
                                   const Vector3 normal = normalOf(corners);
                                   // The extents of the polyhedron on both sides of the face.
                                   const Vector3& origin = corners.front();
                                   const double front = points.maximumHeight(normal, origin, 0.0);
                                   const double back =
                                       points.maximumHeight(Vector3{} - normal, origin, 0.0);
                                   return std::min(front, back) <= bend * std::max(front, back);
                               });
}

std::vector<Triangle> triangulate(std::span<const std::int64_t> corners, const PositionOf& position,
                                  const volatile bool& abortFlag)
{
    std::vector<Triangle> triangles;
    const FlatPolygon polygon = flatten(corners, position);
    if (corners.size() > 3 && corners.size() <= maximumCornersToClip && !polygon.isConvex())
        for (const auto& [a, b, c] : clipEars(polygon, abortFlag))
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
                                   const PositionOf& position, const volatile bool& abortFlag)
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
        if (abortFlag)
            throw Aborted();
        for (const auto& [a, b, c] : triangulate(face, position, abortFlag))
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
