#include "examples/ExampleFields.hpp"
#include "examples/RoundBar.hpp"

namespace tavrin::app::examples
{

namespace
{

/// The velocity: a quadratic flow with vorticity inside the sphere and the potential flow around the
/// sphere outside. Both agree on the sphere.
Vector3 velocityAt(const Vector3& point)
{
    const double x = point[0];
    const double squared = dot(point, point);
    if (squared < 1.0)
        return {-1.5 * (1.0 - 2.0 * squared + x * x), -1.5 * x * point[1], -1.5 * x * point[2]};
    const double cubed = squared * std::sqrt(squared);
    Vector3 velocity = -1.5 * x / (cubed * squared) * point;
    velocity[0] += 1.0 + 0.5 / cubed;
    return velocity;
}

}

Field makeSphericalVortex()
{
    const RoundBar bar{-2.0, 2.0, 1.6, 1.6, 20, 10};
    const auto grid = bar.makeTetrahedra();
    std::vector<Vector3> values;
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
        values.push_back(velocityAt(grid->point(i)));
    return addData(grid, PointSetBase::Points, std::move(values), Precision::Float64, {},
                   "velocity");
}

}
