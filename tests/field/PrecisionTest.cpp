#include "Meshes.hpp"

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

namespace
{

using namespace meshes;

/// Sides of 1e-7 of the length, whatever vertex comes first.
TEST(Locator, FindsPositionsInNeedles)
{
    constexpr double thin = 1e-7;
    const Points<3> corners{{0, 0, 0}, {1, 0, 0}, {1, thin, 0}, {1, 0, thin}};
    std::array<std::size_t, 4> order{0, 1, 2, 3};
    do
    {
        Mesh<3> tetrahedra;
        Mesh<2> triangles;
        Mesh<3> surface;
        Points<3> vertices;
        for (const std::size_t i : order)
            vertices.push_back(corners[i]);
        tetrahedra.addCell(CellType::Tetrahedra, vertices);
        Points<2> flat;
        Points<3> inSpace;
        for (const std::size_t i : order)
            if (i < 3)
            {
                flat.emplace_back(corners[i][0], corners[i][1]);
                inSpace.emplace_back(corners[i][0], corners[i][0], corners[i][1]);
            }
        triangles.addCell(CellType::Triangles, flat);
        surface.addCell(CellType::Triangles, inSpace);
        EXPECT_EQ(cellAt<3>(*tetrahedra.grid(), {0.75, 0.25 * thin, 0.25 * thin}), 0U);
        EXPECT_EQ(cellAt<3>(*tetrahedra.grid(), {0.75, 0.75 * thin, 0.25 * thin}), std::nullopt);
        EXPECT_EQ(cellAt<2>(*triangles.grid(), {0.75, 0.25 * thin}), 0U);
        EXPECT_EQ(cellAt<2>(*triangles.grid(), {0.75, -0.25 * thin}), std::nullopt);
        EXPECT_EQ(cellAt<3>(*surface.grid(), {0.75, 0.75, 0.25 * thin}), 0U);
    } while (std::ranges::next_permutation(order).found);
    Mesh<3> hexahedra;
    Points<3> sheared;
    for (const Reference at :
         {Reference{0, 0, 0}, Reference{1, 0, 0}, Reference{1, 1, 0}, Reference{0, 1, 0},
          Reference{0, 0, 1}, Reference{1, 0, 1}, Reference{1, 1, 1}, Reference{0, 1, 1}})
        sheared.emplace_back(at[0] + at[1] + at[2], thin * at[1], thin * at[2]);
    hexahedra.addCell(CellType::Hexahedra, sheared);
    EXPECT_EQ(cellAt<3>(*hexahedra.grid(), {1.2, 0.4 * thin, 0.4 * thin}), 0U);
    EXPECT_EQ(cellAt<3>(*hexahedra.grid(), {1.2, 1.4 * thin, 0.4 * thin}), std::nullopt);
}

/// Computed in single precision, as a program that stores such a surface would.
TEST(Locator, FindsTheCentersOfTheTrianglesOfASurfaceInSinglePrecision)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> number(-1.0F, 1.0F);
    std::vector<std::array<float, 3>> coordinates;
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    constexpr std::size_t numTriangles = 500;
    for (std::size_t i = 0; i < numTriangles; ++i)
    {
        const std::array<float, 3> place{100.0F * number(random), 100.0F * number(random),
                                         100.0F * number(random)};
        for (int k = 0; k < 3; ++k)
        {
            connectivity.push_back(static_cast<std::int64_t>(coordinates.size()));
            coordinates.push_back(
                {place[0] + number(random), place[1] + number(random), place[2] + number(random)});
        }
        offsets.push_back(static_cast<std::int64_t>(coordinates.size()));
    }
    // A vertex far away must not make its own cell, or others, answer from farther away.
    connectivity.insert(connectivity.end(), {0, 1, static_cast<std::int64_t>(coordinates.size())});
    coordinates.push_back({1e9F, 0.0F, 0.0F});
    offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
    const UnstructuredGrid<3> grid(std::make_shared<WrappedValueArray<Vector3, float>>(
                                       coordinates.front().data(), coordinates.size(), 3, nullptr),
                                   CellTable{std::vector(numTriangles + 1, CellType::Triangles),
                                             IndexArray(offsets), IndexArray(connectivity)});
    for (std::size_t i = 0; i < numTriangles; ++i)
    {
        const auto* const corners = &coordinates[3 * i];
        Vector3 center;
        for (std::size_t axis = 0; axis < 3; ++axis)
            center[axis] = (corners[0][axis] + corners[1][axis] + corners[2][axis]) * (1.0F / 3.0F);
        EXPECT_EQ(cellAt<3>(grid, center), i);
        const Vector3 normal = normalized(cross(grid.point(3 * i + 1) - grid.point(3 * i),
                                                grid.point(3 * i + 2) - grid.point(3 * i)));
        EXPECT_EQ(cellAt<3>(grid, center + 1e-3 * normal), std::nullopt);
    }
}

/// Positions given as decimal fractions, on axes that were stored in single precision.
TEST(Locator, FindsTheEndsOfAxesInSinglePrecision)
{
    const auto gridOf = [](Precision precision, double scale)
    {
        RectilinearGrid<2>::Coordinates axes;
        for (const double x : {-0.3, -0.1, 0.2, 0.7})
            for (auto& axis : axes)
                axis.push_back(static_cast<double>(static_cast<float>(scale * x)));
        return RectilinearGrid<2>(axes, precision);
    };
    for (const double scale : {1e-3, 1.0, 1e5})
        for (const double x : {-0.3, 0.7})
        {
            const Vector2 corner = scale * Vector2(x, 0.7);
            const std::size_t cell = x < 0.0 ? 6 : 8;
            EXPECT_EQ(cellAt<2>(gridOf(Precision::Float32, scale), corner), cell);
            EXPECT_EQ(cellAt<2>(gridOf(Precision::Float32, scale), 1.00001 * corner), std::nullopt);
            EXPECT_EQ(cellAt<2>(gridOf(Precision::Float64, scale), 1.0000002 * corner),
                      std::nullopt);
        }
    // Positions near the other end of a cell that is as long as this are no less accurate.
    const RectilinearGrid<1> outlier({std::vector{-1e9, 0.0, 1.0}}, Precision::Float32);
    EXPECT_EQ(cellAt<1>(outlier, {2.0}), std::nullopt);
    EXPECT_EQ(cellAt<1>(outlier, {5.0}), std::nullopt);
}

}
