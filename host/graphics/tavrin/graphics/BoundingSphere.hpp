#pragma once

#include <tavrin/value/Tensor.hpp>

#include <span>
#include <vector>

namespace tavrin::graphics
{

/// A sphere that encloses an object. Its center is in double precision, so that objects far from the
/// origin can be drawn relative to it.
struct BoundingSphere
{
    Tensor<double, 3> center{};
    double radius = 0.0;

    bool operator==(const BoundingSphere&) const = default;
};

/// The smallest sphere that encloses the points. No point is farther from the center than the
/// radius, distances computed in double precision; the radius exceeds the smallest possible one by
/// at most 1e-7 of it. Points with a component that is not finite are ignored. Without any other
/// point, the sphere is at the origin with radius 0.
///
/// The smallest sphere around a few points is enlarged by the farthest point outside of it until
/// there is none, as in B. Gaertner, "Fast and Robust Smallest Enclosing Balls", ESA 1999.
TAVRIN_API BoundingSphere computeBoundingSphere(std::span<const Tensor<float, 3>> points);
inline BoundingSphere computeBoundingSphere(const std::vector<Tensor<float, 3>>& points)
{
    return computeBoundingSphere(std::span(points));
}

}
