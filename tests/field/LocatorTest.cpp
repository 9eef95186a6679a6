#include "Meshes.hpp"

#include <support/ThreadCount.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/location/CellGeometry.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <limits>

namespace
{

using namespace meshes;

/// The lowest cell that contains a position, found by testing all of them.
template<std::size_t D>
std::optional<std::size_t> cellByBruteForce(const UnstructuredGrid<D>& grid,
                                            const Tensor<double, D>& position)
{
    for (std::size_t i = 0; i < grid.numCells(); ++i)
    {
        const Cell cell = grid.cell(i);
        Points<D> vertices;
        for (const std::size_t point : cell.pointIndices())
            vertices.push_back(grid.point(point));
        Reference at;
        if (CellGeometry<D>(cell.type(), vertices.data()).contains(position, at))
            return i;
    }
    return std::nullopt;
}

TEST(Locator, PassesOverDegenerateCells)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    Mesh<3> mesh;
    for (const CellType type : {CellType::Tetrahedra, CellType::Hexahedra, CellType::Pyramids,
                                CellType::Prisms, CellType::QuadraticTetrahedron, CellType::Quads})
    {
        Points<3> flat;
        for (std::size_t k = 0; k < numVerticesOf(type); ++k)
            flat.push_back({0.1 * static_cast<double>(k), 0.3, 0.3});
        mesh.addCell(type, flat);
        mesh.addCell(type, Points<3>(flat.size(), {0.3, 0.3, 0.3}));
        flat.back() = {nan, infinity, 0.3};
        mesh.addCell(type, flat);
    }
    mesh.addCell(CellType::Invalid, Points<3>{});
    mesh.addCell(CellType::Tetrahedra, Points<3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    const auto grid = mesh.grid();
    EXPECT_EQ(cellAt<3>(*grid, {0.3, 0.3, 0.3}), grid->numCells() - 1);
    EXPECT_EQ(cellAt<3>(*grid, {0.1, 0.3, 0.3}), grid->numCells() - 1);
    for (const double outside : {nan, infinity, -infinity, 1e300})
        EXPECT_FALSE(locate<3>(*grid, {0.2, 0.2, outside}));
}

TEST(Locator, FindsNothingInGridsWithoutCells)
{
    EXPECT_FALSE(locate<3>(*Mesh<3>().grid(), {}));
    EXPECT_FALSE(locate<3>(UniformGrid<3>({.size = {0, 0, 0}}), {}));
    EXPECT_FALSE(locate<2>(CurvilinearGrid<2>({0, 0, 0}, stored(Points<2>{})), {}));
    EXPECT_FALSE(locate<1>(RectilinearGrid<1>(RectilinearGrid<1>::Coordinates{}), {}));
}

TEST(Locator, CountsCellsOfFewerDimensionsWherePositionsLieOnThem)
{
    Mesh<3> mesh;
    mesh.addCell(CellType::Triangles, Points<3>{{0, 0, 1}, {1, 0, 1}, {0, 1, 2}});
    mesh.addCell(CellType::Lines, Points<3>{{0, 0, 0}, {1, 2, 3}});
    mesh.addCell(CellType::Points, Points<3>{{5, 5, 5}});
    mesh.addCell(CellType::Tetrahedra, Points<3>{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 4}});
    const auto grid = mesh.grid();
    EXPECT_EQ(cellAt<3>(*grid, {0.25, 0.25, 1.25}), 0U);
    EXPECT_EQ(cellAt<3>(*grid, {0.25, 0.25, 1.25 + 1e-10}), 0U);
    EXPECT_EQ(cellAt<3>(*grid, {0.25, 0.25, 1.25 + 1e-6}), 3U);
    EXPECT_EQ(cellAt<3>(*grid, {0.5, 1.0, 1.5}), 1U);
    EXPECT_EQ(cellAt<3>(*grid, {5, 5, 5}), 2U);
    EXPECT_FALSE(locate<3>(*grid, {5, 5, 5.0 + 1e-9}));
}

/// Cells of all types that overlap in any order, with shared vertices and without.
template<std::size_t D>
Mesh<D> heap(std::size_t cells, std::mt19937& random)
{
    Mesh<D> mesh;
    for (std::size_t i = 0; i < cells; ++i)
    {
        const auto type = static_cast<CellType>(1 + random() % (numCellTypes - 1));
        if (type == CellType::Invalid || dimensionOf(type) > D || dimensionOf(type) + 1 < D)
            continue;
        const auto place = firstCoordinates<D>({randomVector(random, 3.0).begin()[0],
                                                randomVector(random, 3.0).begin()[1],
                                                randomVector(random, 3.0).begin()[2]});
        Points<D> vertices = distortedCell<D>(type, 0.1, random);
        for (auto& vertex : vertices)
            vertex = vertex + place - distortedCell<D>(CellType::Points, 0.0, random)[0];
        mesh.addCell(type, vertices);
    }
    return mesh;
}

template<std::size_t D>
std::vector<Tensor<double, D>> queriesFor(const Mesh<D>& mesh, std::mt19937& random)
{
    std::vector<Tensor<double, D>> queries = mesh.points;
    for (std::size_t i = 0; i < mesh.points.size(); ++i)
    {
        const auto& point = mesh.points[i];
        const auto& other = mesh.points[random() % mesh.points.size()];
        queries.push_back(0.5 * (point + mesh.points[(i + 1) % mesh.points.size()]));
        queries.push_back(0.75 * point + 0.25 * other);
    }
    return queries;
}

template<std::size_t D>
void expectBruteForce(const Mesh<D>& mesh, std::mt19937& random)
{
    const auto grid = mesh.grid();
    const Box<D> bounds = locatorOf(*grid).bounds();
    for (const auto& query : queriesFor(mesh, random))
    {
        const auto cell = cellAt<D>(*grid, query);
        ASSERT_EQ(cell, cellByBruteForce(*grid, query)) << query;
        EXPECT_TRUE(!cell || bounds.contains(query));
    }
}

/// Overlapping cells of one type, distorted up to where they have no inverse.
template<std::size_t D>
Mesh<D> row(CellType type, double distortion, std::mt19937& random)
{
    Mesh<D> mesh;
    for (int i = 0; i < 40; ++i)
    {
        Points<D> vertices = distortedCell<D>(type, distortion, random);
        for (auto& vertex : vertices)
            vertex[0] += 0.5 * i;
        mesh.addCell(type, vertices);
    }
    return mesh;
}

/// Six tetrahedra in each cube of a distorted lattice, in shuffled order.
Mesh<3> tetrahedra(std::size_t n, double distortion, std::mt19937& random)
{
    Mesh<3> mesh;
    for (std::size_t i = 0; i < n * n * n; ++i)
        mesh.points.push_back(Vector3(static_cast<double>(i % n), static_cast<double>(i / n % n),
                                      static_cast<double>(i / n / n)) +
                              randomVector(random, distortion));
    std::vector<std::vector<std::int64_t>> cells;
    const std::array<std::size_t, 3> steps{1, n, n * n};
    for (std::size_t i = 0; i < n * n * n; ++i)
        for (std::array<std::size_t, 3> axes{0, 1, 2};
             i % n < n - 1 && i / n % n < n - 1 && i / n / n < n - 1;)
        {
            std::vector<std::int64_t> cell{static_cast<std::int64_t>(i)};
            for (const std::size_t axis : axes)
                cell.push_back(cell.back() + static_cast<std::int64_t>(steps[axis]));
            cells.push_back(cell);
            if (!std::ranges::next_permutation(axes).found)
                break;
        }
    std::ranges::shuffle(cells, random);
    for (const auto& cell : cells)
        mesh.addCell(CellType::Tetrahedra, cell);
    return mesh;
}

TEST(Locator, AgreesWithAskingEveryCell)
{
    std::mt19937 random(1);
    expectBruteForce(heap<3>(300, random), random);
    expectBruteForce(heap<2>(300, random), random);
    expectBruteForce(heap<1>(300, random), random);
    expectBruteForce(tetrahedra(6, 0.2, random), random);
    // Folded: some tetrahedra are inverted and overlap others.
    expectBruteForce(tetrahedra(5, 0.7, random), random);
    for (const CellType type : {CellType::Hexahedra, CellType::Prisms, CellType::Pyramids,
                                CellType::QuadraticTetrahedron, CellType::TriquadraticHexahedron})
        for (const double distortion : {0.0, 0.1, 0.6})
            expectBruteForce(row<3>(type, distortion, random), random);
    for (const CellType type : {CellType::Quads, CellType::BiquadraticQuad})
        for (const double distortion : {0.0, 0.1, 0.6})
            expectBruteForce(row<2>(type, distortion, random), random);
    // More identical cells than a leaf holds.
    Mesh<3> pile;
    for (int i = 0; i < 40; ++i)
        pile.addCell(CellType::Tetrahedra, Points<3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    expectBruteForce(pile, random);
}

TEST(Locator, FindsCellsFarFromTheOriginAndOfAnySize)
{
    std::mt19937 random(2);
    for (const double scale : {1e-140, 1e-6, 1e120})
    {
        Mesh<3> mesh = tetrahedra(4, 0.1, random);
        for (Vector3& point : mesh.points)
            point = scale * (point + Vector3(1e6, 0.0, -1e5));
        // Geometrically shrinking cells, down to one that single precision cannot tell from a point.
        Vector3 corner = mesh.points.back();
        for (double size = 0.5 * scale; size > 1e-5 * scale; size *= 0.5)
        {
            mesh.addCell(CellType::Tetrahedra, Points<3>{corner, corner + size * Vector3(1, 0, 0),
                                                         corner + size * Vector3(0, 1, 0),
                                                         corner + size * Vector3(0, 0, 1)});
            corner += size * Vector3(1, 1, 1);
        }
        const auto grid = mesh.grid();
        for (std::size_t i = 0; i < grid->numCells(); ++i)
        {
            const Cell cell = grid->cell(i);
            Vector3 middle{};
            for (const std::size_t point : cell.pointIndices())
                middle += 0.25 * grid->point(point);
            EXPECT_EQ(cellAt<3>(*grid, middle), i);
        }
    }
}

TEST(Locator, FindsOtherCellsAsAccuratelyBesideMarksForMissingCoordinates)
{
    std::mt19937 random(8);
    for (const double mark : {1e20, 9.96921e36, -1e100, 1e308})
        for (const double size : {1e-3, 1e6})
        {
            Mesh<3> mesh = tetrahedra(5, 0.2, random);
            const std::size_t inner = mesh.types.size();
            mesh.addCell(CellType::Triangles, Points<3>{{9, 0, 0}, {9, 1, 0}, {9, 0, 1}});
            mesh.addCell(CellType::Lines, Points<3>{{10, 0, 0}, {10, 1, 0}});
            mesh.addCell(CellType::Tetrahedra,
                         Points<3>{{mark, mark, mark}, {10, 5, 5}, {10, 6, 5}, {10, 5, 6}});
            mesh.addCell(CellType::Tetrahedra,
                         Points<3>{{-mark, -mark, -mark}, {-9, 5, 5}, {-9, 6, 5}, {-9, 5, 6}});
            for (Vector3& point : mesh.points)
                point *= size;
            const auto grid = mesh.grid();
            const Box<3> bounds = locatorOf(*grid).bounds();
            for (const auto& query : queriesFor(mesh, random))
            {
                const auto cell = cellAt<3>(*grid, query);
                ASSERT_EQ(cell, cellByBruteForce(*grid, query)) << query;
                EXPECT_TRUE(!cell || bounds.contains(query)) << query;
            }
            EXPECT_FALSE(cellAt<3>(*grid, {HUGE_VAL, 0.0, 0.0}));
            EXPECT_EQ(cellAt<3>(*grid, size * Vector3(9.0, 0.2, 0.2)), inner);
            EXPECT_FALSE(cellAt<3>(*grid, size * Vector3(9.001, 0.2, 0.2)));
            EXPECT_EQ(cellAt<3>(*grid, size * Vector3(10.0, 0.2, 0.0)), inner + 1);
            EXPECT_FALSE(cellAt<3>(*grid, size * Vector3(10.0, 0.2, 0.001)));
        }
    const RectilinearGrid<3> line({std::vector{0.0, 1e-3, 2e-3, 1e30}, {1.0}, {1e-3, 2e-3}});
    EXPECT_FALSE(cellAt<3>(line, {-1e-9, 1.0, 1.5e-3}));
    EXPECT_EQ(cellAt<3>(line, {1.5e-3, 1.0, 1.5e-3}), 1U);
}

TEST(Locator, ReadsPointsAndCellsOfEveryPrecision)
{
    std::mt19937 random(4);
    Mesh<3> mesh = tetrahedra(4, 0.2, random);
    std::vector<float> narrow;
    for (Vector3& point : mesh.points)
        for (double& coordinate : point)
        {
            narrow.push_back(static_cast<float>(coordinate));
            coordinate = static_cast<double>(narrow.back());
        }
    const std::vector<std::int32_t> offsets(mesh.offsets.begin(), mesh.offsets.end());
    const std::vector<std::int32_t> connectivity(mesh.connectivity.begin(),
                                                 mesh.connectivity.end());
    const UnstructuredGrid<3> grid(std::make_shared<WrappedValueArray<Vector3, float>>(
                                       narrow.data(), mesh.points.size(), 3, nullptr),
                                   {mesh.types, IndexArray(std::span(offsets), nullptr),
                                    IndexArray(std::span(connectivity), nullptr)});
    const auto wide = mesh.grid();
    for (const Vector3& query : queriesFor(mesh, random))
        EXPECT_EQ(cellAt<3>(grid, query), cellAt<3>(*wide, query));
}

/// The bits of the answers to queries in an order, a few at a time, with one hint for all.
template<std::size_t D>
std::vector<std::uint64_t> answers(const EmbeddedCellComplex<D>& grid,
                                   const CellLocator<D>& locator,
                                   const std::vector<Tensor<double, D>>& queries,
                                   const std::vector<std::size_t>& order, std::size_t atOnce)
{
    std::vector<std::uint64_t> bits(queries.size());
    typename CellLocator<D>::Hint hint;
    std::vector<Location> locations(atOnce);
    std::vector<std::uint8_t> isInside(atOnce);
    for (std::size_t first = 0; first < order.size(); first += atOnce)
    {
        const auto group = std::span(order).subspan(first, std::min(atOnce, order.size() - first));
        std::vector<Tensor<double, D>> positions;
        for (const std::size_t i : group)
            positions.push_back(queries[i]);
        locator.locate(positions, locations.data(), isInside.data(), hint);
        for (std::size_t n = 0; n < group.size(); ++n)
        {
            if (isInside[n] == 0)
                continue;
            const Location& location = locations[n];
            std::uint64_t& word = bits[group[n]];
            word = location.cell;
            for (std::size_t k = 0; k < location.numVertices; ++k)
                word = word * 31 + std::bit_cast<std::uint64_t>(location.weights[k]) +
                       location.pointIndices[k] + grid.numCells();
        }
    }
    return bits;
}

TEST(Locator, GivesAnswersThatDependOnThePositionAlone)
{
    std::mt19937 random(6);
    const Mesh<3> mesh = heap<3>(9000, random);
    std::vector<Grid<3>> grids = sameGrids(24, {-3.0, -3.0, -3.0}, {0.25, 0.25, 0.25});
    grids.push_back(mesh.grid());
    std::vector<Vector3> queries;
    for (int i = 0; i < 3000; ++i)
        queries.push_back(i % 3 == 0 ? randomVector(random, 4.0)
                                     : mesh.points[random() % mesh.points.size()]);
    std::vector<std::size_t> order(queries.size());
    std::iota(order.begin(), order.end(), 0U);
    for (const Grid<3>& grid : grids)
    {
        const auto expected = answers<3>(*grid, locatorOf(*grid), queries, order, 1);
        for (const auto& [count, atOnce] : {std::pair(1, 7), {2, 32}, {3, 500}, {8, 1}})
        {
            const ThreadCount threads(count);
            const auto locator = makeLocator<3>(*grid);
            std::ranges::shuffle(order, random);
            EXPECT_EQ(answers<3>(*grid, *locator, queries, order, static_cast<std::size_t>(atOnce)),
                      expected);
        }
    }
}

}
