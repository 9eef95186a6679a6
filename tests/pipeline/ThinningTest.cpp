#include <support/realData.hpp>
#include <support/smallData.hpp>

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/pipeline/Thinning.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

namespace
{

using namespace support;
using namespace tavrin;
using pipeline::thinned;

template<std::size_t D>
const PointSet<D>& pointsOf(const FunctionBase& function)
{
    return dynamic_cast<const PointSet<D>&>(*function.domain());
}

/// The least and the largest distance of a point from its nearest neighbor.
template<std::size_t D>
std::pair<double, double> nearestDistances(const PointSet<D>& points)
{
    double least = std::numeric_limits<double>::infinity();
    double most = 0.0;
    for (std::size_t i = 0; i < points.numPoints(); ++i)
    {
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t k = 0; k < points.numPoints(); ++k)
            if (k != i)
                nearest = std::min(nearest, norm(points.point(i) - points.point(k)));
        least = std::min(least, nearest);
        most = std::max(most, nearest);
    }
    return {least, most};
}

/// A function on the points of a grid whose value at a point is the index of the point.
std::shared_ptr<const FunctionBase> indicesOn(const std::shared_ptr<const PointSetBase>& grid,
                                              std::shared_ptr<const ValidityMask> mask = nullptr)
{
    std::vector<Scalar> values(grid->numPoints());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = Scalar(static_cast<double>(i));
    return addData(grid, PointSetBase::Points, std::move(values), Precision::Float64, {}, "index",
                   std::move(mask));
}

std::shared_ptr<const UniformGrid<3>> uniform(const GridSize& size, const Vector3& spacing)
{
    return std::make_shared<const UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = size, .spacing = spacing});
}

TEST(Thinning, KeepsWhatIsFewEnough)
{
    const auto function = indicesOn(uniform({4, 4, 4}, {1, 1, 1}));
    EXPECT_EQ(thinned(function, 64), function);
    EXPECT_NE(thinned(function, 63), function);

    auto mask = std::make_shared<ValidityMask>(64, std::uint8_t{0});
    (*mask)[7] = (*mask)[9] = 1;
    const auto masked = indicesOn(uniform({4, 4, 4}, {1, 1, 1}), mask);
    EXPECT_EQ(thinned(masked, 2), masked);
}

TEST(Thinning, TakesEveryNthPointOfEvenGrids)
{
    for (const std::size_t maximum : {1U, 7U, 64U, 500U, 800U, 5000U})
    {
        // Ten times as far apart along z as along x and y.
        const auto function = indicesOn(uniform({64, 48, 8}, {1, 1, 10}));
        const auto thin = thinned(function, maximum);
        const auto& points = pointsOf<3>(*thin);
        EXPECT_LE(points.numPoints(), maximum);
        EXPECT_GE(points.numPoints(), maximum / 4) << maximum;
        const auto [least, most] = nearestDistances(points);
        if (maximum > 1)
        {
            EXPECT_EQ(least, most) << maximum;
        }
        const auto values = valuesOf<Scalar>(*thin);
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_EQ(pointsOf<3>(*function).point(static_cast<std::size_t>(values[i][0])),
                      points.point(i));
        EXPECT_EQ(thin->name(), "index");
        EXPECT_EQ(thin->indexInFile(0), static_cast<std::size_t>(values[0][0]));
    }
}

TEST(Thinning, SpreadsSamplesEvenlyWhereTheGridIsUneven)
{
    std::mt19937 random(5);
    std::normal_distribution<double> normal;
    std::vector<Vector3> cluster;
    for (int i = 0; i < 20000; ++i)
        cluster.emplace_back(normal(random), normal(random), 0.0);
    std::vector<double> stretched{0.0};
    for (int i = 0; i < 60; ++i)
        stretched.push_back(stretched.back() * 1.2 + 1.0);
    const std::vector<std::shared_ptr<const PointSetBase>> grids{
        cloudOf(cluster), std::make_shared<const RectilinearGrid<3>>(
                              RectilinearGrid<3>::Coordinates{stretched, stretched, {0.0}})};
    for (const auto& grid : grids)
        for (const std::size_t maximum : {1U, 50U, 400U})
        {
            const auto thin = thinned(indicesOn(grid), maximum);
            const auto& points = pointsOf<3>(*thin);
            EXPECT_LE(points.numPoints(), maximum);
            EXPECT_GE(points.numPoints(), maximum * 8 / 10);
            EXPECT_EQ(valuesOf<Scalar>(*thin),
                      valuesOf<Scalar>(*thinned(indicesOn(grid), maximum)));
        }
    // Without clusters: 400 of 20,000 random samples, but none are close to one another.
    const auto thin = thinned(indicesOn(grids[0]), 400);
    const auto [least, most] = nearestDistances(pointsOf<3>(*thin));
    EXPECT_GT(least, 0.05);
}

TEST(Thinning, LeavesOutWhatIsInvalid)
{
    const auto grid = uniform({40, 40, 1}, {1, 1, 1});
    auto mask = std::make_shared<ValidityMask>(1600, std::uint8_t{0});
    std::fill(mask->begin() + 800, mask->end(), std::uint8_t{1});
    const auto thin = thinned(indicesOn(grid, mask), 100);
    EXPECT_LE(thin->valuesPerStep(), 100U);
    EXPECT_GE(thin->valuesPerStep(), 60U);
    for (const Scalar& value : valuesOf<Scalar>(*thin))
        EXPECT_GE(value[0], 800.0);
    EXPECT_EQ(*thin->validity(), ValidityMask(thin->valuesPerStep(), std::uint8_t{1}));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto odd = thinned(indicesOn(cloudOf<1>({{nan}, {1.0}, {nan}, {1.0}, {1.0}, {2.0}})), 2);
    EXPECT_EQ(valuesOf<Scalar>(*odd), (std::vector<Scalar>{Scalar(1.0), Scalar(5.0)}));
    const auto same = thinned(indicesOn(cloudOf<1>({{1.0}, {1.0}, {1.0}})), 2);
    EXPECT_EQ(valuesOf<Scalar>(*same), (std::vector<Scalar>{Scalar(0.0)}));
}

TEST(Thinning, PutsValuesOnCellsAtTheirCenters)
{
    const auto grid = uniform({9, 9, 1}, {1, 1, 1});
    const std::vector<Scalar> values(64);
    const auto thin = thinned(addData(grid, detail::Cells, values, Precision::Float32, {}), 16);
    ASSERT_EQ(thin->valuesPerStep(), 16U);
    EXPECT_EQ(pointsOf<3>(*thin).point(0), Vector3(0.5, 0.5, 0.0));
    EXPECT_EQ(pointsOf<3>(*thin).point(5), Vector3(2.5, 2.5, 0.0));
    EXPECT_EQ(thin->domainPart(), PointSetBase::Points);
    EXPECT_EQ(thin->values()->precision(), Precision::Float32);
}

TEST(Thinning, ReadsASeriesStepByStep)
{
    std::set<std::size_t> loaded;
    auto series = std::make_shared<SeriesValueArray<Scalar>>(
        Precision::Float64, 3, 100,
        [&](std::size_t step)
        {
            loaded.insert(step);
            return stored(std::vector<Scalar>(100, Scalar(static_cast<double>(step))));
        });
    const std::vector<double> times{0.0, 1.0, 4.0};
    const auto thin = thinned(std::make_shared<const Function<Scalar>>(
                                  lineOf(100), PointSetBase::Points, series, times, "series"),
                              10);
    EXPECT_TRUE(loaded.empty());
    EXPECT_EQ(thin->timeSteps(), times);
    EXPECT_EQ(thin->valuesPerStep(), 10U);
    const auto& typed = dynamic_cast<const Function<Scalar>&>(*thin);
    EXPECT_EQ((*typed.stepValues(2))[3][0], 2.0);
    EXPECT_EQ(loaded, (std::set<std::size_t>{2}));
}

}
