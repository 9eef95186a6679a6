#include "examples/ExampleFields.hpp"
#include "examples/Trigonometry.hpp"

#include <tavrin/domain/UniformGrid.hpp>

namespace tavrin::app::examples
{

Field makeAbcFlow()
{
    constexpr std::size_t cells = 32;
    constexpr double spacing = 2.0 * std::numbers::pi / cells;
    UniformGrid<3>::Layout layout;
    layout.size = {cells + 1, cells + 1, cells + 1};
    layout.spacing = {spacing, spacing, spacing};
    const auto grid = std::make_shared<const UniformGrid<3>>(layout);
    const double a = std::sqrt(3.0);
    const double b = std::sqrt(2.0);
    const double c = 1.0;
    std::vector<Vector3> values;
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
    {
        const GridSize indices = grid->pointIndices(i);
        const double x = static_cast<double>(indices[0]) / cells;
        const double y = static_cast<double>(indices[1]) / cells;
        const double z = static_cast<double>(indices[2]) / cells;
        values.emplace_back(a * sine(z) + c * cosine(y), b * sine(x) + a * cosine(z),
                            c * sine(y) + b * cosine(x));
    }
    return addData(grid, PointSetBase::Points, std::move(values), Precision::Float64, {},
                   "velocity");
}

}
