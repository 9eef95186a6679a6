#include "SampleTest.hpp"

#include <support/ThreadCount.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>

#include <cstring>
#include <iomanip>
#include <numeric>
#include <random>
#include <sstream>

namespace
{

using namespace support;
using namespace tavrin;

constexpr std::size_t pointsPerAxis = 9;

/// A distorted grid of hexahedra.
std::shared_ptr<const CurvilinearGrid<3>> curvilinearGrid()
{
    std::vector<Vector3> points;
    for (std::size_t i = 0; i < pointsPerAxis * pointsPerAxis * pointsPerAxis; ++i)
    {
        const double x = static_cast<double>(i % pointsPerAxis);
        const double y = static_cast<double>(i / pointsPerAxis % pointsPerAxis);
        const double z = static_cast<double>(i / pointsPerAxis / pointsPerAxis);
        points.emplace_back(x + 0.2 * std::sin(y + z), y + 0.2 * std::sin(z + 2.0 * x),
                            z + 0.2 * std::sin(x * y));
    }
    return std::make_shared<CurvilinearGrid<3>>(
        GridSize{pointsPerAxis, pointsPerAxis, pointsPerAxis}, stored(std::move(points)));
}

/// An unstructured grid with the same cells: cell i is cell order[i] of the curvilinear grid.
std::shared_ptr<const UnstructuredGrid<3>> listedGrid(const std::vector<std::size_t>& order)
{
    const auto structured = curvilinearGrid();
    std::vector<Vector3> points;
    for (std::size_t i = 0; i < structured->numPoints(); ++i)
        points.push_back(structured->point(i));
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    for (const std::size_t number : order)
    {
        const Cell cell = structured->cell(number);
        for (const std::size_t point : cell.pointIndices())
            connectivity.push_back(static_cast<std::int64_t>(point));
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
    }
    return std::make_shared<UnstructuredGrid<3>>(
        stored(std::move(points)),
        CellTable{std::vector(order.size(), CellType::Hexahedra), IndexArray(std::move(offsets)),
                  IndexArray(std::move(connectivity))});
}

/// Three steps of arbitrary vectors, a few of which are not finite. Element i has the values that
/// element order[i] would have in ascending order.
std::shared_ptr<const Function<Vector3>> arbitraryFunction(std::shared_ptr<const Domain> domain,
                                                           const DomainPart& part,
                                                           const std::vector<std::size_t>& order)
{
    std::vector<Vector3> values;
    for (std::size_t step = 0; step < 3; ++step)
        for (const std::size_t number : order)
        {
            const std::size_t i = step * order.size() + number;
            Vector3 value;
            for (std::size_t c = 0; c < 3; ++c)
                value[c] = std::sin(static_cast<double>(1 + (3 * i + c) * 7919 % 1013)) /
                           (i % 97 == 5 ? 0.0 : 3.0);
            values.push_back(value);
        }
    return addData(std::move(domain), part, std::move(values), Precision::Float64, {0.0, 1.0, 2.5});
}

std::vector<std::size_t> ascending(std::size_t count)
{
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    return numbers;
}

/// Points, some of which lie outside, and the values at these points at one time after the other.
struct Samples
{
    std::vector<Vector3> points;
    std::vector<Vector3> values;

    /// The samples at some of the points.
    Samples at(const std::vector<std::size_t>& order) const
    {
        Samples result;
        for (const std::size_t i : order)
            result.points.push_back(points[i]);
        for (std::size_t step = 0; step < values.size() / points.size(); ++step)
            for (const std::size_t i : order)
                result.values.push_back(values[step * points.size() + i]);
        return result;
    }
};

class SampleInvariance : public SampleTest
{
protected:
    std::vector<Vector3> sample(const std::shared_ptr<const DataObject>& field,
                                const std::vector<Vector3>& points, int threads)
    {
        const ThreadCount threadCount(threads);
        connect(field, cloudOf<3>(points));
        execute();
        return values<Vector3>();
    }

    /// Samples at one time per execution, and compares with samples at all times in one execution.
    void expectSameOneByOne(const std::shared_ptr<const DataObject>& field, const Samples& expected,
                            const std::vector<double>& times)
    {
        for (std::size_t step = 0; step < times.size(); ++step)
        {
            std::ostringstream text;
            text << std::setprecision(17) << times[step];
            run.setText("Time", text.str());
            const auto sampled = sample(field, expected.points, 2);
            ASSERT_EQ(sampled.size(), expected.points.size());
            EXPECT_EQ(std::memcmp(sampled.data(), &expected.values[step * sampled.size()],
                                  sampled.size() * sizeof(Vector3)),
                      0);
        }
    }

    /// Samples with several numbers of threads, all points or only some, in any order.
    void expectSame(const std::shared_ptr<const DataObject>& field, const Samples& expected)
    {
        auto order = ascending(expected.points.size());
        for (const int threads : {1, 2, 3, 8})
        {
            const Samples some = expected.at(order);
            const auto sampled = sample(field, some.points, threads);
            ASSERT_EQ(sampled.size(), some.values.size());
            EXPECT_EQ(
                std::memcmp(sampled.data(), some.values.data(), sampled.size() * sizeof(Vector3)),
                0);
            std::ranges::shuffle(order, mRandom);
            if (threads == 2)
                order.resize(order.size() / 7);
        }
    }

    std::vector<Vector3> scatteredPoints(std::size_t count)
    {
        std::uniform_real_distribution<double> coordinate(-0.5, 8.5);
        std::vector<Vector3> points;
        for (std::size_t i = 0; i < count; ++i)
            points.emplace_back(coordinate(mRandom), coordinate(mRandom), coordinate(mRandom));
        return points;
    }

    std::mt19937_64 mRandom{9};
};

TEST_F(SampleInvariance, TheAnswerDependsOnFieldAndPositionAlone)
{
    const GridSize size{pointsPerAxis, pointsPerAxis, pointsPerAxis};
    const std::vector<double> axis{0.0, 1.0, 1.5, 3.0, 4.0, 4.25, 6.0, 7.0, 8.0};
    const auto curvilinear = curvilinearGrid();
    const std::size_t numCells = curvilinear->numCells();
    auto order = ascending(numCells);
    std::ranges::shuffle(order, mRandom);
    const auto points = scatteredPoints(4000);
    for (const auto& grid : std::initializer_list<std::shared_ptr<const EmbeddedCellComplex<3>>>{
             std::make_shared<UniformGrid<3>>(
                 UniformGrid<3>::Layout{.size = size, .spacing = {1.0, 1.0, 1.0}}),
             std::make_shared<RectilinearGrid<3>>(
                 RectilinearGrid<3>::Coordinates{axis, axis, axis}),
             curvilinear, listedGrid(ascending(numCells))})
        for (const DomainPart& part : {PointSetBase::Points, detail::Cells})
        {
            SCOPED_TRACE(std::string(nameOf(grid->structuringType())) + " " + part.getName());
            const auto field = arbitraryFunction(grid, part, ascending(grid->numElements(part)));
            run.setText("Time", "[0:3#0.4]+{1}");
            const Samples expected{points, sample(field, points, 1)};
            const std::vector<double> times = result<Vector3>()->timeSteps();
            const auto& validity = *result<Vector3>()->validity();
            EXPECT_GT(2 * std::ranges::count(validity, 1), std::ssize(validity));
            expectSame(field, expected);
            if (grid->structuringType() == StructuringType::Unstructured)
                expectSame(
                    arbitraryFunction(listedGrid(order), part,
                                      part == detail::Cells ? order : ascending(grid->numPoints())),
                    expected);
            expectSameOneByOne(field, expected, times);
        }
}

/// Lattices with more points than are looked up at once, with few points along an axis, and with
/// descending axes.
TEST_F(SampleInvariance, ALatticeIsSampledAsItsPointsAre)
{
    const auto curvilinear = curvilinearGrid();
    const auto field =
        arbitraryFunction(curvilinear, PointSetBase::Points, ascending(curvilinear->numPoints()));
    const std::vector<double> axis{-0.3, 0.0, 0.1, 2.0, 2.5, 7.0, 7.9, 8.1};
    const std::vector<double> descending(axis.rbegin(), axis.rend());
    const auto uniform = [](const GridSize& size, const Vector3& origin, const Vector3& spacing)
    {
        return std::make_shared<UniformGrid<3>>(
            UniformGrid<3>::Layout{.size = size, .origin = origin, .spacing = spacing});
    };
    const auto rectilinear = [](const std::vector<double>& x, const std::vector<double>& y,
                                const std::vector<double>& z) {
        return std::make_shared<RectilinearGrid<3>>(RectilinearGrid<3>::Coordinates{x, y, z});
    };
    for (const auto& grid : std::initializer_list<std::shared_ptr<const EmbeddedCellComplex<3>>>{
             uniform({61, 50, 47}, {-0.2, -0.2, -0.2}, {0.15, 0.17, 0.19}),
             uniform({1, 30, 300}, {4.1, -0.2, -0.2}, {0.0, 0.3, 0.03}),
             uniform({40, 30, 20}, {8.2, -0.2, -0.2}, {-0.2, 0.3, 0.4}),
             rectilinear(axis, axis, axis), rectilinear({3.0}, axis, {2.0, 2.7}),
             rectilinear(axis, descending, axis)})
        for (const std::string times : {"{0.7}", "[0:2#0.25]"})
        {
            std::vector<Vector3> points;
            for (std::size_t i = 0; i < grid->numPoints(); ++i)
                points.push_back(grid->point(i));
            run.setText("Time", times);
            const auto expected = sample(field, points, 2);
            for (const int threads : {1, 3})
            {
                const ThreadCount threadCount(threads);
                connect(field, grid);
                execute();
                const auto sampled = values<Vector3>();
                ASSERT_EQ(sampled.size(), expected.size());
                EXPECT_EQ(
                    std::memcmp(sampled.data(), expected.data(), sampled.size() * sizeof(Vector3)),
                    0);
            }
        }
}

}
