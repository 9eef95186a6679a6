#include "Meshes.hpp"

#include <array>

namespace
{

using namespace meshes;

/// Positions inside a cell of one type must be found with the weights that they were made with.
template<std::size_t D>
void expectInversion(CellType type, double distortion)
{
    SCOPED_TRACE(std::string(nameOf(type)) + " in " + std::to_string(D) + "-D");
    std::mt19937 random(11);
    const bool isSubparametric = type >= CellType::SubparametricQuadraticLine &&
                                 type <= CellType::SubparametricQuadraticHexahedron;
    const CellType shape = isSubparametric ? linearTypeOf(type) : type;
    for (int trial = 0; trial < 20; ++trial)
    {
        Mesh<D> mesh;
        mesh.addCell(type, distortedCell<D>(type, distortion, random));
        const auto grid = mesh.grid();
        for (int i = 0; i < 10; ++i)
        {
            const Vector3 cube = 0.5 * (randomVector(random) + Vector3(1.0, 1.0, 1.0));
            const Reference at{cube[0], cube[1], cube[2]};
            if (distanceOutside(type, at) > 0.0)
                continue;
            std::vector<double> weights(numVerticesOf(shape));
            shapeFunctions(shape, at, weights);
            Tensor<double, D> position{};
            for (std::size_t k = 0; k < weights.size(); ++k)
                position += weights[k] * mesh.points[k];
            const auto location = locate<D>(*grid, position);
            ASSERT_TRUE(location);
            std::vector<double> expected(numVerticesOf(type));
            shapeFunctions(type, at, expected);
            for (std::size_t k = 0; k < expected.size(); ++k)
                EXPECT_NEAR(location->weights[k], expected[k], 1e-11);
        }
    }
}

TEST(Inversion, FindsTheWeightsInRegularAndDistortedCellsOfEveryType)
{
    for (std::size_t i = 0; i < numCellTypes; ++i)
    {
        const auto type = static_cast<CellType>(i);
        if (type == CellType::Invalid || type == CellType::Points)
            continue;
        for (const double distortion : {0.0, 0.02, 0.08})
        {
            // Positions lie on curved lines and surfaces in space only up to rounding.
            expectInversion<3>(type, distortion);
            if (dimensionOf(type) <= 2)
                expectInversion<2>(type, distortion);
            if (dimensionOf(type) <= 1)
                expectInversion<1>(type, distortion);
        }
    }
}

TEST(Inversion, ReachesVerticesAndTheApexOfAPyramid)
{
    std::mt19937 random(3);
    for (const CellType type : {CellType::Pyramids, CellType::QuadraticPyramid, CellType::Prisms,
                                CellType::TriquadraticHexahedron})
    {
        Mesh<3> mesh;
        mesh.addCell(type, distortedCell<3>(type, 0.05, random));
        const auto grid = mesh.grid();
        for (std::size_t k = 0; k < mesh.points.size(); ++k)
        {
            const auto location = locate<3>(*grid, mesh.points[k]);
            ASSERT_TRUE(location) << nameOf(type) << k;
            EXPECT_NEAR(location->weights[k], 1.0, 1e-11);
        }
    }
}

/// Rounding of coordinates is coarse across a thin cell, and the search must not oscillate.
TEST(Inversion, FindsPositionsInThinCells)
{
    std::mt19937 random(9);
    struct Shape
    {
        CellType type;
        double size;
        double thickness;
        double shear;
        double place;
    };
    for (const auto& [type, size, thickness, shear, place] :
         {Shape{CellType::Lines, 1e-6, 1.0, 0.0, 1e3}, Shape{CellType::Quads, 1.0, 1e-5, 0.0, 1e3},
          Shape{CellType::QuadraticTriangle, 1.0, 1e-5, 0.0, 1e3},
          Shape{CellType::Pyramids, 1.0, 1e-5, 0.0, 1e3},
          Shape{CellType::QuadraticHexahedron, 1.0, 1e-5, 0.0, 1e3},
          Shape{CellType::TriquadraticHexahedron, 1.0, 1e-8, 0.0, 1.0},
          Shape{CellType::Hexahedra, 0.002, 1.0, 1000.0, 500.0}})
    {
        Points<3> vertices;
        for (std::size_t k = 0; k < numVerticesOf(type); ++k)
        {
            const Reference at = vertexReference(type, k);
            vertices.push_back(place * Vector3(1.3, -1.7, 1.1) +
                               size * (at[0] * Vector3(0.48, 0.6, 0.64) +
                                       at[1] * (thickness * Vector3(-0.8, 0.6, 0.1) +
                                                shear * Vector3(0.48, 0.6, 0.64)) +
                                       at[2] * Vector3(-0.36, -0.48, 0.8)));
        }
        Mesh<3> mesh;
        mesh.addCell(type, vertices);
        const auto grid = mesh.grid();
        std::vector<double> weights(vertices.size());
        for (int i = 0; i < 200; ++i)
        {
            const Vector3 cube = 0.5 * (randomVector(random) + Vector3(1.0, 1.0, 1.0));
            const Reference at{cube[0], cube[1], cube[2]};
            if (distanceOutside(type, at) > 0.0)
                continue;
            shapeFunctions(type, at, weights);
            Vector3 position{};
            for (std::size_t k = 0; k < weights.size(); ++k)
                position += weights[k] * vertices[k];
            const auto location = locate<3>(*grid, position);
            ASSERT_TRUE(location) << nameOf(type) << ' ' << at[0] << ' ' << at[1] << ' ' << at[2];
            for (std::size_t k = 0; k < weights.size(); ++k)
                EXPECT_NEAR(location->weights[k], weights[k], 1e-5);
        }
    }
}

/// Far from the origin a position that lies beyond the apex of a pyramid by less than the rounding of its
/// coordinates belongs to the cell. `locate` expects that its weights sum to 1.
TEST(Inversion, CountsNothingTwiceBeyondTheApexOfAPyramid)
{
    const Vector3 apex(1e9 + 0.5, 1e9 + 0.5, 1e9 + 1.0);
    Mesh<3> mesh;
    mesh.addCell(CellType::Pyramids, Points<3>{{1e9, 1e9, 1e9},
                                               {1e9 + 1.0, 1e9, 1e9},
                                               {1e9 + 1.0, 1e9 + 1.0, 1e9},
                                               {1e9, 1e9 + 1.0, 1e9},
                                               apex});
    const auto grid = mesh.grid();
    Vector3 beyond = apex;
    beyond[2] = std::nextafter(beyond[2], HUGE_VAL);
    const auto location = locate<3>(*grid, beyond);
    ASSERT_TRUE(location);
    EXPECT_NEAR(location->weights[4], 1.0, 1e-6);
}

TEST(Inversion, TakesAStretchedTwistedAndInvertedHexahedron)
{
    // A cell with four vertices at two positions, a thin one, an inverted one and a spiral one.
    const Points<3> cube{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                         {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    const auto mapped = [&](auto map)
    {
        Points<3> vertices = cube;
        std::ranges::transform(vertices, vertices.begin(), map);
        return vertices;
    };
    const std::vector<Points<3>> shapes{
        mapped([](const Vector3& p) { return Vector3(p[0] * p[1], p[1], p[2] * p[1]); }),
        mapped([](const Vector3& p) { return Vector3(p[0], p[1], 1e-7 * p[2]); }),
        mapped([](const Vector3& p) { return Vector3(p[0], p[1], -p[2]); }),
        mapped([](const Vector3& p)
               { return Vector3(p[0] - p[1] * p[2], p[1] + p[0] * p[2], p[2]); })};
    std::mt19937 random(5);
    for (const Points<3>& shape : shapes)
    {
        Mesh<3> mesh;
        mesh.addCell(CellType::Hexahedra, shape);
        const auto grid = mesh.grid();
        for (int i = 0; i < 200; ++i)
        {
            const Vector3 cubePoint = 0.5 * (randomVector(random) + Vector3(1.0, 1.0, 1.0));
            std::array<double, 8> weights;
            shapeFunctions(CellType::Hexahedra, {cubePoint[0], cubePoint[1], cubePoint[2]},
                           weights);
            Vector3 position{};
            for (std::size_t k = 0; k < 8; ++k)
                position += weights[k] * shape[k];
            const auto location = locate<3>(*grid, position);
            ASSERT_TRUE(location);
            EXPECT_LT(norm(positionOf<3>(*grid, *location) - position), 1e-14);
        }
        for (const Vector3& vertex : shape)
            EXPECT_TRUE(locate<3>(*grid, vertex));
    }
}

/// Hexahedra as they are written for prisms, pyramids and tetrahedra, by repeating vertices. Every point of
/// theirs is answered by the first of two equal cells, those on collapsed edges and faces, too.
TEST(Inversion, FindsTheLowestCellWhereEdgesOfHexahedraCollapse)
{
    const std::vector<std::array<std::size_t, 8>> collapsed{
        {0, 1, 2, 2, 4, 5, 6, 6}, {0, 1, 2, 3, 4, 4, 7, 7}, {0, 1, 2, 3, 0, 5, 6, 3},
        {0, 1, 2, 3, 4, 5, 6, 6}, {0, 1, 2, 3, 4, 4, 4, 4}, {0, 1, 1, 0, 4, 5, 6, 7},
        {0, 1, 2, 2, 4, 4, 4, 4}, {0, 1, 2, 2, 4, 4, 6, 6}, {0, 0, 2, 3, 4, 5, 6, 6}};
    std::mt19937 random(11);
    for (const double far : {0.0, 1e4})
        for (const auto& numbers : collapsed)
        {
            const Points<3> corners = distortedCell<3>(CellType::Hexahedra, 0.1, random);
            Points<3> vertices;
            for (const std::size_t number : numbers)
                vertices.push_back(corners[number] + Vector3(far, -far, 0.3 * far));
            Mesh<3> mesh;
            mesh.addCell(CellType::Hexahedra, vertices);
            mesh.addCell(CellType::Hexahedra, vertices);
            const auto grid = mesh.grid();
            for (int i = 0; i < 125; ++i)
            {
                const Reference at{0.25 * (i % 5), 0.25 * (i / 5 % 5), 0.25 * (i / 25)};
                std::array<double, 8> weights;
                shapeFunctions(CellType::Hexahedra, at, weights);
                Vector3 position{};
                for (std::size_t k = 0; k < 8; ++k)
                    position += weights[k] * vertices[k];
                const auto location = locate<3>(*grid, position);
                ASSERT_TRUE(location) << at[0] << ' ' << at[1] << ' ' << at[2];
                ASSERT_EQ(location->cell, 0U) << at[0] << ' ' << at[1] << ' ' << at[2];
                EXPECT_LT(norm(positionOf<3>(*grid, *location) - position), 1e-10);
            }
        }
}

}
