#include "Meshes.hpp"

#include <support/abortFlags.hpp>

#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/field/FieldSampler.hpp>

#include <limits>

namespace
{

using namespace meshes;

/// A function with the coordinates of the points as its values.
template<std::size_t D>
std::shared_ptr<const Function<Tensor<double, D>>> coordinatesOf(const Grid<D>& grid, double reach)
{
    Points<D> points;
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
        points.push_back(grid->point(i));
    return std::make_shared<const Function<Tensor<double, D>>>(
        grid, PointSetBase::Points, stored(points), std::vector<double>{}, "", nullptr, nullptr,
        reach);
}

template<std::size_t D>
std::optional<Tensor<double, D>> valueAt(const Function<Tensor<double, D>>& function,
                                         const Tensor<double, D>& position)
{
    const auto field = Field<D, Tensor<double, D>>::applyTo(function);
    const auto evaluator = field->makeEvaluator();
    evaluator->reset(0.0, position);
    return evaluator->isValid() ? std::optional(evaluator->value()) : std::nullopt;
}

/// Lines, triangles, quads and quadratic cells here and there, and tetrahedra, which do not reach.
Mesh<3> scatteredCells(std::mt19937& random)
{
    Mesh<3> mesh;
    for (int i = 0; i < 40; ++i)
        for (const CellType type : {CellType::Triangles, CellType::Quads, CellType::Tetrahedra,
                                    CellType::Lines, CellType::QuadraticTriangle})
        {
            const Vector3 place = randomVector(random, 5.0);
            Points<3> vertices;
            for (std::size_t k = 0; k < numVerticesOf(type); ++k)
            {
                const Reference at = vertexReference(type, k);
                vertices.push_back(place + Vector3(at[0], at[1], at[2]) +
                                   randomVector(random, 0.1));
            }
            mesh.addCell(type, vertices);
        }
    return mesh;
}

/// The least distance of the position from many points spread over the cells that reach.
double sampledDistance(const EmbeddedCellComplex<3>& grid, const Vector3& position)
{
    constexpr int pointsPerAxis = 12;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < grid.numCells(); ++i)
    {
        const Cell cell = grid.cell(i);
        std::array<double, maximumVertices> weights;
        for (int n = 0; n <= pointsPerAxis && dimensionOf(cell.type()) < 3; ++n)
            for (int m = 0; m <= (dimensionOf(cell.type()) < 2 ? 0 : pointsPerAxis); ++m)
            {
                const Reference at{n / double{pointsPerAxis}, m / double{pointsPerAxis}, 0.0};
                if (distanceOutside(cell.type(), at) > 1e-12)
                    continue;
                shapeFunctions(cell.type(), at, weights);
                Vector3 point{};
                for (std::size_t k = 0; k < cell.numVertices(); ++k)
                    point += weights[k] * grid.point(cell.pointIndex(k));
                least = std::min(least, norm(point - position));
            }
    }
    return least;
}

TEST(Reach, GivesTheValueOfTheClosestPointOfAllCells)
{
    std::mt19937 random(7);
    const Grid<3> grid = scatteredCells(random).grid();
    for (const double reach : {0.3, 2.0, std::numeric_limits<double>::infinity()})
    {
        const auto inCells = coordinatesOf<3>(grid, 0.0);
        const auto function = coordinatesOf<3>(grid, reach);
        for (int i = 0; i < 150; ++i)
        {
            const Vector3 position = randomVector(random, 7.0);
            if (valueAt(*inCells, position))
                continue;
            // A value is the point that it was taken at.
            const auto point = valueAt(*function, position);
            const double distance = point ? norm(*point - position) : reach;
            const double sampled = sampledDistance(*grid, position);
            EXPECT_LE(distance, reach);
            if (point)
            {
                EXPECT_LE(distance, sampled + 1e-12) << position;
                EXPECT_GT(distance, sampled - 0.15) << position;
            }
            else
                EXPECT_GT(sampled, reach) << position;
        }
    }
}

TEST(Reach, TakesTheLowestOfEquallyCloseCells)
{
    // A fan around an edge, in all orders, far from the origin, where distances are rounded.
    std::vector<std::size_t> order{0, 1, 2, 3, 4};
    do
    {
        Mesh<3> mesh;
        const Vector3 far(1234.1, -987.7, 55.3);
        for (const std::size_t i : order)
        {
            const double angle = 0.5 * static_cast<double>(i);
            mesh.addCell(CellType::Triangles,
                         Points<3>{far, far + Vector3(0.1, 0.3, 1.1),
                                   far + Vector3(std::cos(angle), std::sin(angle), 0.4)});
        }
        const auto grid = mesh.grid();
        std::vector<Scalar> values;
        for (std::size_t i = 0; i < grid->numCells(); ++i)
            values.emplace_back(static_cast<double>(i));
        const Function<Scalar> function(grid, detail::Cells, stored(values), {}, "", nullptr,
                                        nullptr, 1.0);
        const auto field = Field<3, Scalar>::applyTo(function);
        const auto evaluator = field->makeEvaluator();
        for (const double height : {0.2, 0.5, 0.9})
        {
            evaluator->reset(0.0, far + height * Vector3(0.1, 0.3, 1.1) + Vector3(-0.2, -0.3, 0.1));
            ASSERT_TRUE(evaluator->isValid());
            EXPECT_EQ(evaluator->value()[0], 0.0);
        }
    } while (std::ranges::next_permutation(order).found);
}

TEST(Reach, GoesBesideFlatGridsAndLinesButNotBesideVolumes)
{
    const auto plane = std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {11, 11, 1}, .spacing = {0.1, 0.1, 0.1}});
    const auto below = valueAt<3>(*coordinatesOf<3>(plane, 0.2), {0.33, 0.71, -0.15});
    ASSERT_TRUE(below);
    EXPECT_LT(norm(*below - Vector3(0.33, 0.71, 0.0)), 1e-14);
    EXPECT_EQ(valueAt<3>(*coordinatesOf<3>(plane, 0.2), {0.33, 0.71, -0.21}), std::nullopt);
    EXPECT_EQ(valueAt<3>(*coordinatesOf<3>(plane, 0.5), {1.3, -0.4, 0.0}), Vector3(1.0, 0.0, 0.0));

    Mesh<2> line;
    line.addCell(CellType::Lines, Points<2>{{0.0, 0.0}, {1.0, 1.0}});
    line.addCell(CellType::Triangles, Points<2>{{5.0, 0.0}, {6.0, 0.0}, {5.0, 1.0}});
    const auto function = coordinatesOf<2>(line.grid(), 0.5);
    EXPECT_EQ(valueAt<2>(*function, {0.75, 0.25}), Vector2(0.5, 0.5));
    EXPECT_EQ(valueAt<2>(*function, {1.3, 1.3}), Vector2(1.0, 1.0));
    EXPECT_EQ(valueAt<2>(*function, {4.99, 0.5}), std::nullopt);
    EXPECT_EQ(valueAt<2>(*function, {5.25, 0.25}), Vector2(5.25, 0.25));

    const auto box = std::make_shared<UniformGrid<2>>(
        UniformGrid<2>::Layout{.size = {3, 3, 1}, .spacing = {1.0, 1.0}});
    EXPECT_EQ(valueAt<2>(*coordinatesOf<2>(box, 0.5), {2.25, 1.0}), std::nullopt);
    EXPECT_THROW(coordinatesOf<2>(box, -1.0), logic_error);
    EXPECT_THROW(coordinatesOf<2>(box, std::numeric_limits<double>::quiet_NaN()), logic_error);
}

}
