#include "Meshes.hpp"

#include <tavrin/field/SpatialOrder.hpp>

#include <limits>

namespace
{

using namespace meshes;

TEST(SpatialOrder, BringsNeighborsTogetherAndKeepsEveryPosition)
{
    std::mt19937 random(8);
    Points<3> positions;
    for (int i = 0; i < 5000; ++i)
        positions.push_back(randomVector(random));
    positions[17][1] = std::numeric_limits<double>::quiet_NaN();
    positions[23][2] = std::numeric_limits<double>::infinity();
    const auto order = spatialOrder<3>(positions);
    auto sorted = order;
    std::ranges::sort(sorted);
    ASSERT_EQ(sorted.size(), positions.size());
    double distance = 0.0;
    for (std::size_t i = 0; i < sorted.size(); ++i)
    {
        EXPECT_EQ(sorted[i], i);
        const double step = norm(positions[order[i]] - positions[order[i == 0 ? 0 : i - 1]]);
        distance += std::isfinite(step) ? step : 0.0;
    }
    // In random order it is about 1.3 per position.
    EXPECT_LT(distance / static_cast<double>(order.size()), 0.2);

    Points<1> line;
    for (int i = 0; i < 5000; ++i)
        line.push_back({i * 0.5});
    EXPECT_TRUE(spatialOrder<1>(line).empty());
    EXPECT_TRUE(spatialOrder<2>({}).empty());
}

}
