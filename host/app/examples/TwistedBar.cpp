#include "examples/ExampleFields.hpp"
#include "examples/RoundBar.hpp"

namespace tavrin::app::examples
{

Field makeTwistedBar()
{
    constexpr double twist = 0.25;
    const RoundBar bar{0.0, 4.0, 1.0, 0.5, 10, 6};
    const double a = bar.halfAxisY * bar.halfAxisY;
    const double b = bar.halfAxisZ * bar.halfAxisZ;
    const auto grid = bar.makeQuadraticTetrahedra();
    std::vector<Vector3> values;
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
    {
        const Vector3 point = grid->point(i);
        const double warping = -twist * (a - b) / (a + b) * point[1] * point[2];
        values.emplace_back(warping, -twist * point[0] * point[2], twist * point[0] * point[1]);
    }
    return addData(grid, PointSetBase::Points, std::move(values), Precision::Float64, {},
                   "displacement");
}

}
