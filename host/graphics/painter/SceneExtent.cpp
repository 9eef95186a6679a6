#include "SceneExtent.hpp"

#include "ArrowMesh.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <algorithm>
#include <limits>

namespace tavrin::graphics::painter
{

namespace
{

/// A scene is flat along an axis if its extent is below this fraction of its largest extent.
constexpr double flatness = 1e-3;

bool isFinite(const Position& position)
{
    return std::ranges::all_of(position, [](double part) { return std::isfinite(part); });
}

struct Extent
{
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    Position lower{infinity, infinity, infinity};
    Position upper{-infinity, -infinity, -infinity};

    void add(const Position& position)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            lower[axis] = std::min(lower[axis], position[axis]);
            upper[axis] = std::max(upper[axis], position[axis]);
        }
    }
};

template<typename Visitor>
void visitPositions(const ArrowBatch& batch, Visitor& visitor)
{
    for (const ArrowGlyph& arrow : batch.arrows())
    {
        const Position end = arrow.start + arrow.direction;
        const bool isSeen = std::isfinite(arrow.width) && arrow.color.alpha > 0.0F;
        if (!isSeen || !isFinite(arrow.start) || !isFinite(end))
            continue;
        const double width = std::abs(arrow.width);
        const double headRadius =
            width * (arrow.tube ? ArrowMesh::tubeHeadRadius : ArrowMesh::flatHeadRadius);
        visitor(arrow.start, width * ArrowMesh::shaftRadius);
        visitor(arrow.start + ArrowMesh::neck * arrow.direction, headRadius);
        visitor(end, 0.0);
    }
}

template<typename Visitor>
void visitPositions(const Primitive& primitive, Visitor& visitor)
{
    const VertexBuffer* const vertices = primitive.findBuffer("in_vertex");
    if (vertices == nullptr || vertices->numComponents() != 3)
        return;
    const auto values = vertices->values();
    for (std::size_t i = 0; i + 2 < values.size(); i += 3)
    {
        const Position position(values[i], values[i + 1], values[i + 2]);
        if (isFinite(position))
            visitor(position, 0.0);
    }
}

/// Calls the visitor with positions and radii of spheres that together bound the scene; with the
/// origin for an empty scene.
template<typename Visitor>
void visitPositions(const Scene& scene, const std::optional<Box>& outline, Visitor visitor)
{
    bool isEmpty = true;
    const auto visit = [&](const Position& position, double radius)
    {
        isEmpty = false;
        visitor(position, radius);
    };
    for (const auto& drawable : scene.drawables)
    {
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get()))
            visitPositions(*batch, visit);
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable.get()))
            visitPositions(*primitive, visit);
        else if (drawable != nullptr)
            throw logic_error("the painter does not know this kind of drawable");
    }
    if (outline)
        for (const Position& corner : cornersOf(outline->lower, outline->upper))
            visit(corner, 0.0);
    if (isEmpty)
        visitor(Position{}, 0.0);
}

bool isTransparent(const Drawable& drawable)
{
    if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
        return std::ranges::any_of(batch->arrows(), [](const ArrowGlyph& arrow)
                                   { return arrow.color.alpha < 1.0F; });
    const auto* const primitive = dynamic_cast<const Primitive*>(&drawable);
    return primitive != nullptr && primitive->config().renderBin() == RenderBin::Transparent;
}

/// Unit vectors along which the extent of a scene matters: to eight sides, the same tilted toward
/// the eye like the sides of a perspective view, and toward and away from the eye.
std::vector<Position> directionsToTheSidesOf(const Camera::Axes& axes)
{
    std::vector<Position> directions{axes.back, -1.0 * axes.back};
    for (const double tilt : {0.0, 0.25})
        for (const double x : {-1.0, 0.0, 1.0})
            for (const double y : {-1.0, 0.0, 1.0})
                if (x != 0.0 || y != 0.0)
                    directions.push_back(x * axes.right + y * axes.up + tilt * axes.back);
    for (Position& direction : directions)
        direction /= norm(direction);
    return directions;
}

/// The middle, rounded to single precision, so that shaders can subtract it from vertices in single
/// precision exactly.
Position middleOf(const Extent& extent)
{
    Position middle = 0.5 * extent.lower + 0.5 * extent.upper;
    for (double& part : middle)
        if (std::abs(part) < std::numeric_limits<float>::max())
            part = static_cast<float>(part);
    return middle;
}

View automaticView(const Position& halfSize)
{
    const double largest = *std::ranges::max_element(halfSize);
    constexpr std::array<View, 3> along{View{0.0, 0.0}, View{-90.0, 0.0}, View{-90.0, 90.0}};
    for (const std::size_t axis : {2U, 1U, 0U})
        if (halfSize[axis] <= flatness * largest)
            return along[axis];
    return {-60.0, 28.0};
}

}

SceneExtent::SceneExtent(const Scene& scene, const std::optional<View>& wantedView)
{
    if (scene.outline && isFinite(scene.outline->lower) && isFinite(scene.outline->upper))
        outline = scene.outline;
    hasTransparent =
        std::ranges::any_of(scene.drawables, [](const auto& drawable)
                            { return drawable != nullptr && isTransparent(*drawable); });

    Extent extent;
    visitPositions(scene, outline, [&](const Position& position, double) { extent.add(position); });
    placement.center = middleOf(extent);
    const Position halfSize = 0.5 * extent.upper - 0.5 * extent.lower;
    const double largest = *std::ranges::max_element(halfSize);
    placement.scale = largest > 1e-300 ? 1.0 / largest : 1.0;
    view = wantedView.value_or(automaticView(halfSize));

    const std::vector<Position> directions = directionsToTheSidesOf(Camera::Axes(view));
    std::vector<double> reached(directions.size(), -Extent::infinity);
    extremes.resize(directions.size());
    visitPositions(scene, outline,
                   [&](const Position& position, double radius)
                   {
                       const Position placed = placement(position);
                       const double placedRadius = placement.scale * radius;
                       for (std::size_t i = 0; i < directions.size(); ++i)
                       {
                           const double reach = dot(placed, directions[i]) + placedRadius;
                           if (reach > reached[i])
                           {
                               reached[i] = reach;
                               extremes[i] = placed + placedRadius * directions[i];
                           }
                       }
                   });
}

}
