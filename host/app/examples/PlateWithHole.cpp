#include "examples/ExampleFields.hpp"
#include "examples/Trigonometry.hpp"

#include <tavrin/domain/CurvilinearGrid.hpp>

namespace tavrin::app::examples
{

namespace
{

constexpr std::size_t cellsOutward = 32;
constexpr std::size_t cellsAround = 128;
constexpr double halfWidth = 5.0;

/// Fractions of the distance from the hole to the edge; each step is longer than the one before.
std::vector<double> makeShares()
{
    constexpr double growth = 1.06;
    std::vector<double> shares{0.0};
    for (double step = 1.0; shares.size() <= cellsOutward; step *= growth)
        shares.push_back(shares.back() + step);
    const double whole = shares.back();
    for (double& share : shares)
        share /= whole;
    return shares;
}

/// The stress at polar coordinates around the center of the hole; the angle is given by its cosine
/// and sine.
Matrix3 stressAt(double distance, double cosine, double sine)
{
    const double q = 1.0 / (distance * distance);
    const double cosine2 = cosine * cosine - sine * sine;
    const double sine2 = 2.0 * sine * cosine;
    const double radial = 0.5 * (1.0 - q) + 0.5 * (1.0 - 4.0 * q + 3.0 * q * q) * cosine2;
    const double hoop = 0.5 * (1.0 + q) - 0.5 * (1.0 + 3.0 * q * q) * cosine2;
    const double shear = -0.5 * (1.0 + 2.0 * q - 3.0 * q * q) * sine2;
    Matrix3 stress{};
    stress(0, 0) = radial * cosine * cosine + hoop * sine * sine - 2.0 * shear * sine * cosine;
    stress(1, 1) = radial * sine * sine + hoop * cosine * cosine + 2.0 * shear * sine * cosine;
    stress(0, 1) = (radial - hoop) * sine * cosine + shear * cosine2;
    stress(1, 0) = stress(0, 1);
    return stress;
}

}

Field makePlateWithHole()
{
    std::vector<Vector2> points;
    std::vector<Matrix3> stresses;
    const std::vector<double> shares = makeShares();
    for (std::size_t around = 0; around <= cellsAround; ++around)
    {
        const double turns = static_cast<double>(around) / cellsAround;
        const Vector2 direction{cosine(turns), sine(turns)};
        const double edge = halfWidth / std::max(std::abs(direction[0]), std::abs(direction[1]));
        for (const double share : shares)
        {
            const double distance = 1.0 + share * (edge - 1.0);
            points.push_back(distance * direction);
            stresses.push_back(stressAt(distance, direction[0], direction[1]));
        }
    }
    auto positions =
        std::make_shared<DefaultValueArray<Vector2>>(std::move(points), Precision::Float64);
    const auto grid = std::make_shared<const CurvilinearGrid<2>>(
        GridSize{cellsOutward + 1, cellsAround + 1, 1}, std::move(positions));
    return addData(grid, PointSetBase::Points, std::move(stresses), Precision::Float64, {},
                   "stress");
}

}
