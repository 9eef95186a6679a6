#include "GlyphProjector.hpp"

#include "ArrowMesh.hpp"

#include <algorithm>
#include <numbers>

namespace tavrin::graphics::painter
{

namespace
{

using Pixel = GlyphProjector::Pixel;

/// Corners of the circles around a tube.
constexpr std::size_t numCircleCorners = 24;

/// In units of the picture.
constexpr double leastWidth = 1.0;
constexpr double leastLength = 2.0;

/// The corners of the convex hull: A. M. Andrew, "Another efficient algorithm for convex hulls in two
/// dimensions", Information Processing Letters 9, 1979.
std::vector<Pixel> convexHull(std::vector<Pixel> points)
{
    const auto turn = [](const Pixel& a, const Pixel& b, const Pixel& c)
    { return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]); };
    std::ranges::sort(points);
    std::vector<Pixel> hull;
    for (int side = 0; side < 2; ++side)
    {
        const std::size_t first = hull.size();
        for (const Pixel& point : points)
        {
            while (hull.size() >= first + 2 &&
                   turn(hull[hull.size() - 2], hull.back(), point) <= 0.0)
                hull.pop_back();
            hull.push_back(point);
        }
        hull.pop_back();
        std::ranges::reverse(points);
    }
    return hull;
}

}

GlyphProjector::Axis GlyphProjector::axisOf(const ArrowGlyph& arrow) const
{
    const Position direction = mPlacement.scale * arrow.direction;
    const double trueLength = norm(direction);
    Axis axis{.middle = mPlacement(arrow.start) + 0.5 * direction,
              .along = trueLength > 0.0 ? direction / trueLength : mCamera.axes().right,
              .side = {},
              .length = 0.0,
              .width = 0.0};
    const double unit = mUnit / mCamera.pixelsPerUnit(axis.middle);
    axis.length = std::max(trueLength, leastLength * unit);
    axis.width = std::max(mPlacement.scale * std::abs(arrow.width), leastWidth * unit);
    axis.side = cross(towardsEye(axis.middle), axis.along);
    // Any side will do for an arrow that points at the eye.
    if (norm(axis.side) < 1e-4)
        axis.side =
            cross(std::abs(axis.along[2]) < 0.7 ? Position(0.0, 0.0, 1.0) : Position(1.0, 0.0, 0.0),
                  axis.along);
    axis.side /= norm(axis.side);
    return axis;
}

Position GlyphProjector::towardsEye(const Position& position) const
{
    if (mCamera.isParallel())
        return mCamera.eye();
    const Position offset = mCamera.eye() - position;
    return offset / norm(offset);
}

std::array<Pixel, 7> GlyphProjector::flat(const ArrowGlyph& arrow) const
{
    const Axis axis = axisOf(arrow);
    std::array<Pixel, 7> corners{};
    std::ranges::transform(ArrowMesh::flatOutline(ArrowMesh::flatHeadRadius), corners.begin(),
                           [&](const auto& corner)
                           { return mCamera.project(axis(corner[0], 0.0, corner[1])); });
    return corners;
}

std::array<Pixel, 4> GlyphProjector::segment(const Segment& segment) const
{
    const Pixel from = mCamera.project(segment.start);
    const Pixel to = mCamera.project(segment.end);
    Pixel along{to[0] - from[0], to[1] - from[1]};
    const double length = std::hypot(along[0], along[1]);
    along = length > 0.0 ? Pixel{along[0] / length, along[1] / length} : Pixel{1.0, 0.0};
    const double half = 0.5 * segment.width;
    const double beyond = length > 0.0 ? 0.0 : half;
    const auto corner = [&](const Pixel& end, double forward, double across)
    {
        return Pixel{end[0] + forward * along[0] - across * along[1],
                     end[1] + forward * along[1] + across * along[0]};
    };
    return {corner(from, -beyond, half), corner(to, beyond, half), corner(to, beyond, -half),
            corner(from, -beyond, -half)};
}

std::vector<GlyphProjector::TubePart> GlyphProjector::tube(const ArrowGlyph& arrow) const
{
    const Axis axis = axisOf(arrow);
    const auto addCircle = [&](std::vector<Pixel>& points, double radius, double share)
    {
        for (std::size_t i = 0; i < numCircleCorners; ++i)
        {
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) /
                                 static_cast<double>(numCircleCorners);
            points.push_back(
                mCamera.project(axis(radius * std::cos(angle), radius * std::sin(angle), share)));
        }
    };
    std::vector<Pixel> shaft;
    addCircle(shaft, ArrowMesh::shaftRadius, 0.0);
    addCircle(shaft, ArrowMesh::shaftRadius, ArrowMesh::neck);
    std::vector<Pixel> base;
    addCircle(base, ArrowMesh::tubeHeadRadius, ArrowMesh::neck);
    std::vector<Pixel> head = base;
    head.push_back(mCamera.project(axis(0.0, 0.0, 1.0)));

    constexpr float shaftBrightness = 0.9F;
    constexpr float baseBrightness = 0.75F;
    const TubePart shaftPart{convexHull(std::move(shaft)), shaftBrightness};
    const TubePart headPart{convexHull(std::move(head)), 1.0F};
    const bool pointsAway = dot(axis.along, towardsEye(axis(0.0, 0.0, ArrowMesh::neck))) < 0.0;
    if (!pointsAway)
        return {shaftPart, headPart};
    return {headPart, {std::move(base), baseBrightness}, shaftPart};
}

}
