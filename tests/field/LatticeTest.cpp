#include "Meshes.hpp"

#include <support/abortFlags.hpp>

#include <tavrin/base/DataObject.hpp>
#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/field/BatchEvaluator.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/field/SpatialFunctionField.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/location/SortedCoordinates.hpp>

namespace
{

using namespace meshes;

template<std::size_t D>
using Planes = std::array<std::vector<double>, D>;

TEST(Lattice, FallsIntoCompactBlocksOfAnyRangeOfItsPositions)
{
    const Planes<3> planes{std::vector<double>(7), std::vector<double>(5), std::vector<double>(9)};
    const Lattice<3> lattice = latticeOf(planes);
    for (std::size_t first = 0; first < lattice.size(); first += 13)
        for (std::size_t last = first; last <= lattice.size(); last += 17)
            for (const std::size_t atMost : {1, 6, 50, 1000})
            {
                std::vector<std::size_t> numbers;
                for (const LatticeBlock& block : lattice.blocksOf(first, last, atMost))
                {
                    EXPECT_LE(block.size(), atMost);
                    EXPECT_EQ(lattice.part(block).size(), block.size());
                    for (std::size_t k = block.first[2]; k < block.end[2]; ++k)
                        for (std::size_t j = block.first[1]; j < block.end[1]; ++j)
                            for (std::size_t i = block.first[0]; i < block.end[0]; ++i)
                                numbers.push_back(lattice.number({i, j, k}));
                }
                std::ranges::sort(numbers);
                std::vector<std::size_t> expected(last - first);
                std::iota(expected.begin(), expected.end(), first);
                ASSERT_EQ(numbers, expected);
            }
    const auto blocks = lattice.blocksOf(0, lattice.size(), 50);
    EXPECT_LE(blocks.size(), 16U);
}

TEST(SortedCoordinates, AreCountedBelowEveryBound)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> number(-1.0F, 1.0F);
    std::vector<float> crowded;
    for (int i = 0; i < 100; ++i)
        crowded.push_back(number(random) * (i % 3 == 0 ? 1e3F : 1e-3F));
    std::ranges::sort(crowded);
    for (const auto& coordinates : std::initializer_list<std::vector<float>>{
             {2.0F}, {2.0F, 2.0F, 2.0F}, {0.0F, 0.1F, 0.2F, 0.3F}, {-1e37F, 0.0F, 1e37F}, crowded})
    {
        const SortedCoordinates sorted(coordinates);
        std::vector<float> bounds{-HUGE_VALF, -1e38F, 1e38F, HUGE_VALF};
        for (const float x : coordinates)
            for (const float bound :
                 {x, std::nextafter(x, -HUGE_VALF), std::nextafter(x, HUGE_VALF)})
                bounds.push_back(bound);
        bounds.resize(bounds.size() + SortedCoordinates::boundsAtOnce);
        for (std::size_t start = 0; start + SortedCoordinates::boundsAtOnce <= bounds.size();
             ++start)
        {
            const auto numBelow = sorted.numBelow(&bounds[start]);
            const auto numUpTo = sorted.numUpTo(&bounds[start]);
            for (std::size_t n = 0; n < SortedCoordinates::boundsAtOnce; ++n)
            {
                const float bound = bounds[start + n];
                EXPECT_EQ(numBelow[n],
                          std::ranges::lower_bound(coordinates, bound) - coordinates.begin());
                EXPECT_EQ(numUpTo[n],
                          std::ranges::upper_bound(coordinates, bound) - coordinates.begin());
            }
        }
    }
}

/// Planes through vertices of the grid and others, so that positions lie on vertices, too.
template<std::size_t D>
Planes<D> planesThrough(const EmbeddedCellComplex<D>& grid, std::size_t count, std::mt19937& random)
{
    Planes<D> planes;
    const auto box = grid.boundingBox();
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        const auto [lower, upper] = box[axis];
        std::uniform_real_distribution<double> coordinate(1.1 * lower - 0.1 * upper,
                                                          1.1 * upper - 0.1 * lower);
        for (std::size_t i = 0; i < count; ++i)
            planes[axis].push_back(i % 3 == 0 ? grid.point(7 * i % grid.numPoints())[axis]
                                              : coordinate(random));
        planes[axis].push_back(planes[axis].front());
        std::ranges::sort(planes[axis]);
    }
    planes[0].push_back(1e200);
    return planes;
}

/// Compares the values at the positions of a lattice, prepared together and evaluated in a few runs,
/// with those evaluated one after the other.
template<std::size_t D>
void expectSameAnswers(const DataObject& object, const Lattice<D>& lattice, double time = 0.0)
{
    const Points<D> positions = lattice.positions();
    const auto field = Field<D, Scalar>::applyTo(object);
    const auto evaluator = field->makeBatchEvaluator();
    const auto prepared = evaluator->prepare(lattice, neverAbort);
    ASSERT_NE(prepared, nullptr);
    std::vector<Scalar> expected(positions.size());
    std::vector<std::uint8_t> isInside(positions.size());
    evaluator->evaluate(time, positions, expected.data(), isInside.data(), neverAbort);
    EXPECT_GT(std::ranges::count(isInside, 1), 0);

    std::vector<Scalar> values(positions.size());
    std::vector<std::uint8_t> isFound(positions.size());
    for (std::size_t first = 0; first < positions.size();)
    {
        const std::size_t count = std::min(positions.size() - first, 1 + positions.size() / 3);
        evaluator->evaluate(time, *prepared, first, count, &values[first], &isFound[first],
                            neverAbort);
        first += count;
    }
    EXPECT_EQ(isFound, isInside);
    EXPECT_EQ(values, expected);
}

/// A function that is not linear on the points of a grid.
template<std::size_t D>
std::shared_ptr<const Function<Scalar>> wavesOn(const Grid<D>& grid,
                                                const std::vector<double>& times = {})
{
    std::vector<Scalar> waves;
    for (std::size_t i = 0; i < grid->numPoints() * std::max<std::size_t>(1, times.size()); ++i)
        waves.emplace_back(std::sin(static_cast<double>(i)));
    return addData(grid, PointSetBase::Points, waves, Precision::Float64, times);
}

/// Compares the numbers of cells, and a function on points.
template<std::size_t D>
void expectSameAnswers(const Grid<D>& grid, const Planes<D>& planes)
{
    std::vector<Scalar> numbers;
    for (std::size_t i = 0; i < grid->numCells(); ++i)
        numbers.emplace_back(static_cast<double>(i));
    expectSameAnswers<D>(*addData(grid, detail::Cells, numbers, Precision::Float64, {}),
                         latticeOf(planes));
    expectSameAnswers<D>(*wavesOn<D>(grid), latticeOf(planes));
}

template<std::size_t D>
void expectSameAnswers(const Grid<D>& grid, std::size_t count, std::mt19937& random)
{
    expectSameAnswers<D>(grid, planesThrough(*grid, count, random));
}

/// A bent grid whose points are displaced at random; folded where they are displaced far.
template<std::size_t D>
Grid<D> bentGrid(const GridSize& size, double shake, const Tensor<double, D>& origin,
                 std::mt19937& random)
{
    Points<D> points;
    for (std::size_t k = 0; k < size[2]; ++k)
        for (std::size_t j = 0; j < size[1]; ++j)
            for (std::size_t i = 0; i < size[0]; ++i)
            {
                const Vector3 move = randomVector(random, shake);
                const double x = static_cast<double>(i);
                const double y = static_cast<double>(j);
                const double z = static_cast<double>(k);
                points.push_back(origin + firstCoordinates<D>({x + 0.5 * std::sin(y) + move[0],
                                                               y + 0.5 * std::sin(x) + move[1],
                                                               z + 0.3 * x + move[2]}));
            }
    return std::make_shared<CurvilinearGrid<D>>(size, stored(points));
}

TEST(Lattice, IsSampledAsItsPositionsAreOneByOne)
{
    std::mt19937 random(6);
    for (const double shake : {0.0, 0.1, 0.8})
        for (const double far : {0.0, 1e7})
        {
            expectSameAnswers(bentGrid<3>({7, 6, 5}, shake, {far, -far, far}, random), 16, random);
            expectSameAnswers(bentGrid<3>({3, 3, 3}, shake, {far, -far, far}, random), 25, random);
            expectSameAnswers(bentGrid<2>({9, 8, 1}, shake, {far, far}, random), 60, random);
            expectSameAnswers(bentGrid<3>({9, 8, 1}, shake, {far, far, far}, random), 12, random);
        }
    Mesh<3> prisms;
    Mesh<3> mixed;
    Mesh<2> plane;
    for (int i = 0; i < 60; ++i)
        for (const CellType type : {CellType::Prisms, CellType::Hexahedra, CellType::Quads,
                                    CellType::Pyramids, CellType::QuadraticTetrahedron})
        {
            const Vector3 place = randomVector(random, 2.0);
            const auto add = [&](auto& mesh, auto vertices)
            {
                for (auto& vertex : vertices)
                    for (std::size_t axis = 0; axis < vertex.size; ++axis)
                        vertex[axis] += place[axis];
                mesh.addCell(type, vertices);
            };
            const double distortion = i % 3 == 0 ? 0.5 : 0.05;
            add(mixed, distortedCell<3>(type, distortion, random));
            if (type == CellType::Prisms)
                add(prisms, distortedCell<3>(type, distortion, random));
            if (type == CellType::Quads)
                add(plane, distortedCell<2>(type, distortion, random));
        }
    expectSameAnswers<3>(prisms.grid(), 14, random);
    expectSameAnswers<3>(mixed.grid(), 14, random);
    expectSameAnswers<2>(plane.grid(), 40, random);
}

/// A cell so small that the reciprocal of its volume overflows, next to large cells.
TEST(Lattice, IsSampledInAMinuteCellAsItsPositionsAreOneByOne)
{
    constexpr double size = 5e-155;
    Mesh<2> mesh;
    mesh.addCell(CellType::Quads, Points<2>{{0, 0},
                                            {1.4 * size, 0.5 * size},
                                            {2.0 * size, 2.2 * size},
                                            {0.4 * size, 1.6 * size}});
    for (int i = 1; i <= 20; ++i)
    {
        const double x = i;
        mesh.addCell(CellType::Quads, Points<2>{{x, 1}, {x + 1, 1}, {x + 1, 2}, {x, 2}});
    }
    Planes<2> planes;
    for (std::vector<double>& axis : planes)
        for (int i = 0; i < 30; ++i)
            axis.push_back(0.08 * i * size);
    expectSameAnswers<2>(mesh.grid(), planes);
}

TEST(Lattice, IsSampledInABundleAsItsPositionsAreOneByOne)
{
    std::mt19937 random(8);
    const Grid<3> left = bentGrid<3>({5, 6, 4}, 0.1, {0, 0, 0}, random);
    const Grid<3> right = bentGrid<3>({5, 6, 4}, 0.1, {3.5, 0.3, 0}, random);
    const Grid<3> box = std::make_shared<UniformGrid<3>>(UniformGrid<3>::Layout{
        .size = {4, 3, 3}, .origin = {7.5, -1.0, 1.0}, .spacing = {1, 1, 1}});
    Planes<3> planes;
    for (int i = 0; i < 22; ++i)
    {
        planes[0].push_back(0.5 * i - 0.5);
        planes[1].push_back(0.35 * i - 1.5);
        planes[2].push_back(0.3 * i - 0.5);
    }
    Mesh<3> simplices;
    for (int i = 0; i < 20; ++i)
    {
        Points<3> vertices = distortedCell<3>(CellType::Tetrahedra, 0.1, random);
        for (Vector3& vertex : vertices)
            vertex += Vector3(0.4 * i, 0.5, 1.0);
        simplices.addCell(CellType::Tetrahedra, vertices);
    }
    const auto tetrahedra = wavesOn<3>(simplices.grid());
    const DataObjectBundle bundle(
        {wavesOn(left, {0.0, 1.0}), wavesOn(right, {1.0, 3.0}), wavesOn(box), tetrahedra});
    for (const double time : {0.0, 0.5, 1.0, 2.0, 5.0})
        expectSameAnswers<3>(bundle, latticeOf(planes), time);

    // More overlapping members than are prepared for each position, and a bundle in a bundle.
    const auto pile = std::make_shared<DataObjectBundle>(
        DataObjectBundle::Members{wavesOn(right), wavesOn(right), wavesOn(left)});
    expectSameAnswers<3>(DataObjectBundle({wavesOn(left), pile}), latticeOf(planes));
}

TEST(Lattice, IsNotAskedOfALaterMemberWhereEarlierOnesAnswer)
{
    std::mt19937 random(9);
    const Grid<3> grid = bentGrid<3>({7, 7, 7}, 0.0, {0, 0, 0}, random);
    long numCalls = 0;
    const auto formula = std::make_shared<SpatialFunctionField<3, Scalar>>(
        [&](const Vector3&, double) -> Scalar
        {
            ++numCalls;
            return Scalar(7.0);
        });
    Planes<3> planes;
    for (int i = 0; i < 20; ++i)
    {
        planes[0].push_back(2.0 + 0.1 * i);
        planes[1].push_back(2.0 + 0.1 * i);
        planes[2].push_back(3.0 + 0.1 * i);
    }
    planes[2].push_back(100.0);
    const auto field = Field<3, Scalar>::applyTo(DataObjectBundle({wavesOn(grid), formula}));
    const auto evaluator = field->makeBatchEvaluator();
    const auto prepared = evaluator->prepare(latticeOf(planes), neverAbort);
    ASSERT_NE(prepared, nullptr);
    const std::size_t count = latticeOf(planes).size();
    std::vector<Scalar> values(count);
    std::vector<std::uint8_t> isInside(count);
    evaluator->evaluate(0.0, *prepared, 0, count, values.data(), isInside.data(), neverAbort);
    EXPECT_EQ(std::ranges::count(isInside, 0), 0);
    EXPECT_EQ(numCalls, 400);
}

TEST(Lattice, OfFewPositionsIsLeftToTheSearch)
{
    std::mt19937 random(7);
    const auto grid = bentGrid<3>({20, 20, 20}, 0.1, {0, 0, 0}, random);
    const auto field = Field<3, Scalar>::applyTo(
        *addData(grid, PointSetBase::Points, std::vector<Scalar>(8000), Precision::Float64, {}));
    const Planes<3> few{{{0.0, 19.0}, {0.0, 19.0}, {0.0, 19.0}}};
    EXPECT_EQ(field->makeBatchEvaluator()->prepare(latticeOf(few), neverAbort), nullptr);
}

}
