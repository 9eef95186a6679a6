#include <tavrin/graphics/ArrowBatch.hpp>

#include <algorithm>
#include <limits>

namespace tavrin::graphics
{

namespace
{

bool isFinite(const Tensor<double, 3>& position)
{
    return std::isfinite(position[0]) && std::isfinite(position[1]) && std::isfinite(position[2]);
}

/// Calls the visitor with the start and the end of every arrow, if both are finite.
template<typename Visitor>
void visitEnds(const std::vector<ArrowGlyph>& arrows, Visitor&& visitor)
{
    for (const ArrowGlyph& arrow : arrows)
    {
        const Tensor<double, 3> end = arrow.start + arrow.direction;
        if (!isFinite(arrow.start) || !isFinite(end))
            continue;
        visitor(arrow.start);
        visitor(end);
    }
}

BoundingSphere sphereAround(const std::vector<ArrowGlyph>& arrows)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Tensor<double, 3> lower(infinity, infinity, infinity);
    Tensor<double, 3> upper(-infinity, -infinity, -infinity);
    visitEnds(arrows,
              [&](const Tensor<double, 3>& position)
              {
                  for (std::size_t axis = 0; axis < 3; ++axis)
                  {
                      lower[axis] = std::min(lower[axis], position[axis]);
                      upper[axis] = std::max(upper[axis], position[axis]);
                  }
              });
    if (lower[0] > upper[0])
        return {};
    BoundingSphere sphere{lower + 0.5 * (upper - lower), 0.0};
    visitEnds(arrows, [&](const Tensor<double, 3>& position)
              { sphere.radius = std::max(sphere.radius, norm(position - sphere.center)); });
    return sphere;
}

}

ArrowBatch::ArrowBatch(std::vector<ArrowGlyph> arrows, ShadingType shading)
    : mArrows(std::move(arrows)), mShading(shading), mBoundingSphere(sphereAround(mArrows))
{
}

}
