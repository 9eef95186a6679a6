#include "Meshes.hpp"

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>

namespace
{

using namespace meshes;

TEST(Locator, ChoosesTheLowestCellOnFacesInEveryKindOfGrid)
{
    constexpr std::size_t n = 4;
    // For coordinates that ascend or descend, round numbers and others.
    for (const auto& [origin, spacing] :
         {std::pair(Vector3(0.0, 0.0, 0.0), Vector3(1.0, 2.0, -0.5)),
          std::pair(Vector3(5e6, -3e5, 0.1), Vector3(-0.1, 0.01, 0.3))})
        for (const auto& grid : sameGrids(n, origin, spacing))
            for (std::size_t i = 0; i < grid->numPoints(); ++i)
            {
                const std::array<std::size_t, 3> at{i % n, i / n % n, i / n / n};
                const auto lower = [&](std::size_t axis)
                { return at[axis] == 0 ? 0 : at[axis] - 1; };
                const Vector3 point = grid->point(i);
                const auto lowest = lower(0) + lower(1) * (n - 1) + lower(2) * (n - 1) * (n - 1);
                EXPECT_EQ(cellAt<3>(*grid, point), lowest);
                for (std::size_t axis = 0; axis < 3; ++axis)
                    for (const double direction : {-HUGE_VAL, HUGE_VAL})
                    {
                        Vector3 beside = point;
                        beside[axis] = std::nextafter(point[axis], direction);
                        EXPECT_EQ(cellAt<3>(*grid, beside), lowest);
                        EXPECT_TRUE(locatorOf(*grid).bounds().contains(beside));
                        const bool isOutward = (at[axis] == 0 && direction * spacing[axis] < 0) ||
                                               (at[axis] == n - 1 && direction * spacing[axis] > 0);
                        beside[axis] += std::copysign(1e-4 * spacing[axis], direction);
                        EXPECT_EQ(cellAt<3>(*grid, beside).has_value(), !isOutward);
                    }
            }
}

TEST(Locator, TakesUniformGridsOfEveryScale)
{
    const double c = std::cos(0.3);
    const double s = std::sin(0.3);
    const Matrix3 turn(c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0);
    for (const Matrix3& direction : {unitMatrix<3>(), turn, turn * 1e-30})
        for (const double scale : {1e-250, 1e-120, 1.0, 1e120, 1e250})
            for (const GridSize& size : {GridSize{3, 3, 3}, GridSize{3, 1, 3}})
            {
                const UniformGrid<3> grid(
                    {.size = size,
                     .origin = Vector3(1.0, -2.0, 3.0) * (scale * norm(direction)),
                     .spacing = Vector3(scale, -2.0 * scale, 0.1 * scale),
                     .direction = direction});
                for (std::size_t i = 0; i < grid.numPoints(); ++i)
                {
                    const auto location = locate<3>(grid, grid.point(i));
                    ASSERT_TRUE(location) << scale << ' ' << direction << ' ' << i;
                    const auto& vertices = location->pointIndices;
                    const auto at = std::ranges::find(vertices, i) - vertices.begin();
                    ASSERT_LT(static_cast<std::size_t>(at), location->numVertices);
                    EXPECT_NEAR(location->weights[static_cast<std::size_t>(at)], 1.0, 1e-12);
                }
            }
}

TEST(Locator, TakesFlatGridsInSpace)
{
    const double c = std::cos(0.3);
    const double s = std::sin(0.3);
    const UniformGrid<3> plane({.size = {3, 1, 4},
                                .origin = {1.0, 2.0, 3.0},
                                .spacing = {2.0, 0.0, 0.5},
                                .direction = {c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0}});
    const Vector3 middle = Vector3(1.0, 2.0, 3.0) + 3.0 * Vector3(c, s, 0.0) + Vector3(0, 0, 0.6);
    EXPECT_EQ(cellAt<3>(plane, middle), 3U);
    EXPECT_LT(norm(positionOf<3>(plane, *locate<3>(plane, middle)) - middle), 1e-14);
    EXPECT_FALSE(locate<3>(plane, middle + 1e-6 * Vector3(-s, c, 0.0)));
    const RectilinearGrid<3> line({std::vector{1.0}, {2.0, 4.0, 8.0}, {3.0}});
    EXPECT_EQ(cellAt<3>(line, {1.0, 5.0, 3.0}), 1U);
    EXPECT_FALSE(locate<3>(line, {1.0, 5.0, 3.0 + 1e-6}));
    const UniformGrid<2> point({.size = {1, 1, 1}, .origin = {0.1, 0.2}});
    EXPECT_EQ(cellAt<2>(point, {0.1, 0.2}), 0U);
    EXPECT_FALSE(locate<2>(point, {0.1, 0.2001}));
    EXPECT_FALSE(
        locate<2>(UniformGrid<2>({.size = {2, 2, 1}, .spacing = {1, 1}, .direction = {1, 1, 1, 1}}),
                  {0.0, 0.0}));
}

}
