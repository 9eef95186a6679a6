#include "examples/ExampleFields.hpp"
#include "examples/Trigonometry.hpp"

#include <tavrin/domain/UniformGrid.hpp>

namespace tavrin::app::examples
{

namespace
{

Vector2 velocityAt(double x, double y, double time)
{
    constexpr double amplitude = 0.1;
    constexpr double period = 10.0;
    const double shift = 0.25 * sine(time / period);
    const double f = shift * x * x + (1.0 - 2.0 * shift) * x;
    const double slope = 2.0 * shift * x + (1.0 - 2.0 * shift);
    const double factor = std::numbers::pi * amplitude;
    return {-factor * sine(f / 2.0) * cosine(y / 2.0),
            factor * cosine(f / 2.0) * sine(y / 2.0) * slope};
}

}

Field makeDoubleGyre()
{
    UniformGrid<2>::Layout layout;
    layout.size = {101, 51, 1};
    layout.spacing = {0.02, 0.02};
    const auto grid = std::make_shared<const UniformGrid<2>>(layout);
    std::vector<double> times;
    std::vector<Vector2> values;
    for (int step = 0; step <= 20; ++step)
    {
        times.push_back(step * 0.5);
        for (std::size_t i = 0; i < grid->numPoints(); ++i)
        {
            const auto point = grid->point(i);
            values.push_back(velocityAt(point[0], point[1], times.back()));
        }
    }
    return addData(grid, PointSetBase::Points, std::move(values), Precision::Float64,
                   std::move(times), "velocity");
}

}
