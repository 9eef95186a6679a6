#include "Meshes.hpp"

#include <support/ThreadCount.hpp>
#include <support/abortFlags.hpp>

#include <tavrin/base/DataObject.hpp>
#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/field/FieldSampler.hpp>
#include <tavrin/field/SpatialFunctionField.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

namespace
{

using namespace meshes;
using namespace support;

using Object = std::shared_ptr<const DataObject>;

UniformGrid<3>::Layout lattice(const GridSize& size, double spacing, double origin)
{
    return {
        .size = size, .origin = {origin, origin, origin}, .spacing = {spacing, spacing, spacing}};
}

/// A bent grid of hexahedra over 0 to 6 along each axis.
std::shared_ptr<const CurvilinearGrid<3>> bentGrid()
{
    Points<3> points;
    const UniformGrid<3> straight(lattice({7, 7, 7}, 1.0, 0.0));
    for (std::size_t i = 0; i < straight.numPoints(); ++i)
    {
        const Vector3 point = straight.point(i);
        points.push_back(point + Vector3(0.3 * std::sin(point[1]), 0.0, 0.3 * std::sin(point[0])));
    }
    return std::make_shared<CurvilinearGrid<3>>(straight.size(), stored(points));
}

/// A layer of quads through that grid.
std::shared_ptr<const CurvilinearGrid<3>> bentSheet()
{
    const auto grid = bentGrid();
    Points<3> points;
    for (std::size_t i = 0; i < 49; ++i)
        points.push_back(grid->point(3 * 49 + i));
    return std::make_shared<CurvilinearGrid<3>>(GridSize{7, 7, 1}, stored(points));
}

std::shared_ptr<const Function<Scalar>> withReach(const Function<Scalar>& function, double reach)
{
    return std::make_shared<const Function<Scalar>>(function.domain(), function.domainPart(),
                                                    function.values(), function.timeSteps(),
                                                    function.name(), nullptr, nullptr, reach);
}

template<typename Grid>
std::shared_ptr<const Function<Scalar>> wavesOn(std::shared_ptr<const Grid> grid, double phase)
{
    const std::vector<double> times{0.0, 1.0, 2.0};
    std::vector<Scalar> values;
    for (std::size_t i = 0; i < grid->numPoints() * times.size(); ++i)
        values.emplace_back(std::sin(static_cast<double>(i) + phase));
    return addData(std::move(grid), PointSetBase::Points, std::move(values), Precision::Float64,
                   times);
}

/// Samples at several times, as if `numTimes` were to come, and compares with one evaluator.
void expectAnswersOfAnEvaluator(const DataObject& object, const PointSet<3>& points,
                                std::size_t numTimes)
{
    const auto field = Field<3, Scalar>::applyTo(object);
    FieldSampler<3, Scalar> sampler(*field, positionsOf<3>(points), numTimes);
    ASSERT_EQ(sampler.numPositions(), points.numPoints());
    const auto evaluator = field->makeEvaluator();
    std::vector<Scalar> values(points.numPoints());
    std::vector<std::uint8_t> isValid(points.numPoints());
    for (const double time : {0.5, 1.0, 7.0, 1.75})
    {
        ProgressCounter progress;
        const std::size_t numOutside =
            sampler.valuesAt(time, values, isValid, progress, neverAbort);
        EXPECT_EQ(progress.count(), points.numPoints());
        EXPECT_EQ(numOutside, static_cast<std::size_t>(std::ranges::count(isValid, 0)));
        for (std::size_t i = 0; i < points.numPoints(); ++i)
        {
            evaluator->reset(time, points.point(i));
            ASSERT_EQ(isValid[i] != 0, evaluator->isValid());
            ASSERT_EQ(values[i], evaluator->isValid() ? evaluator->value() : Scalar{});
        }
    }
}

TEST(FieldSamplerTest, AnswersAsAnEvaluatorDoesForEveryKindOfFieldAndOfPositions)
{
    const auto box = std::make_shared<const UniformGrid<3>>(lattice({5, 5, 5}, 1.0, 4.0));
    const auto bent = wavesOn(bentGrid(), 0.0);
    const auto straight = wavesOn(box, 1.0);
    const auto bundle =
        std::make_shared<DataObjectBundle>(DataObjectBundle::Members{bent, straight});
    const auto reaching = withReach(*wavesOn(bentSheet(), 2.0), 1.5);
    const auto formula = std::make_shared<SpatialFunctionField<3, Scalar>>(
        [](const Vector3& position, double time) { return Scalar(position[0] * time); });

    std::mt19937 random(3);
    Points<3> scattered;
    for (int i = 0; i < 3000; ++i)
        scattered.push_back(Vector3(3.0, 3.0, 3.0) + randomVector(random, 6.0));
    scattered[17][1] = std::numeric_limits<double>::quiet_NaN();
    const PointCloud<3> cloud(stored(scattered));
    const UniformGrid<3> fine(lattice({21, 22, 23}, 0.45, -0.5));
    const CurvilinearGrid<3> path({3000, 1, 1}, stored(scattered));
    const PointCloud<3> none(stored<Vector3>({}));

    for (const int threads : {1, 3})
        for (const std::size_t numTimes : {1, 1000})
            for (const Object& object :
                 std::initializer_list<Object>{bent, straight, bundle, reaching, formula})
                for (const PointSet<3>* const points :
                     std::initializer_list<const PointSet<3>*>{&cloud, &fine, &path, &none})
                {
                    const ThreadCount team(threads);
                    expectAnswersOfAnEvaluator(*object, *points, numTimes);
                }
}

TEST(FieldSamplerTest, TakesPositionsInMemoryAndOfOtherDimensions)
{
    const auto reaching = withReach(*wavesOn(bentSheet(), 2.0), 1.5);
    const auto formula = std::make_shared<SpatialFunctionField<3, Vector3>>(
        [](const Vector3& position, double) { return position; });
    const std::vector<Vector2> flat{{1.0, 2.0}, {3.0, 4.0}};
    const PointCloud<2> cloud(stored(flat));
    const std::vector<Vector3> positions{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}};
    std::vector<Vector3> values(2);
    std::vector<std::uint8_t> isValid(2);
    ProgressCounter progress;
    FieldSampler<3, Vector3>(*formula, positionsOf<3>(cloud))
        .valuesAt(0.0, values, isValid, progress, neverAbort);
    EXPECT_EQ(values, (std::vector<Vector3>{{1.0, 2.0, 0.0}, {3.0, 4.0, 0.0}}));
    FieldSampler<3, Vector3>(*formula, positionsOf<3>(std::span(positions)))
        .valuesAt(0.0, values, isValid, progress, neverAbort);
    EXPECT_EQ(values, positions);
}

TEST(FieldSamplerTest, HoldsTwoStepsAtMostAndPassesOnWhatLoadingThrows)
{
    const auto grid = bentGrid();
    std::vector<std::weak_ptr<const ValueArray<Scalar>>> loaded;
    const auto load = [&](std::size_t step)
    {
        if (step == 4)
            throw runtime_error("step 4 is missing");
        EXPECT_LE(std::ranges::count_if(loaded, [](const auto& kept) { return !kept.expired(); }),
                  1);
        auto values = std::make_shared<DefaultValueArray<Scalar>>(
            std::vector<Scalar>(grid->numPoints(), Scalar(static_cast<double>(step))),
            Precision::Float64);
        loaded.push_back(values);
        return values;
    };
    const Function<Scalar> series(
        grid, PointSetBase::Points,
        std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, 5, grid->numPoints(), load),
        {0.0, 1.0, 2.0, 3.0, 4.0});
    const auto field = Field<3, Scalar>::applyTo(series);
    const ThreadCount team(4);
    FieldSampler<3, Scalar> sampler(*field, positionsOf<3>(*grid), 5);
    std::vector<Scalar> values(grid->numPoints());
    std::vector<std::uint8_t> isValid(grid->numPoints());
    ProgressCounter progress;
    for (const double time : {0.5, 1.5, 2.25, 0.75})
    {
        EXPECT_EQ(sampler.valuesAt(time, values, isValid, progress, neverAbort), 0U);
        EXPECT_EQ(values.back(), Scalar(time));
    }
    EXPECT_THROW(sampler.valuesAt(3.5, values, isValid, progress, neverAbort), runtime_error);
    EXPECT_EQ(sampler.valuesAt(1.0, values, isValid, progress, neverAbort), 0U);
}

TEST(FieldSamplerTest, StopsSoonAfterAnAbort)
{
    volatile bool abortFlag = false;
    std::size_t numCalls = 0;
    const auto reaching = withReach(*wavesOn(bentSheet(), 2.0), 1.5);
    const auto formula = std::make_shared<SpatialFunctionField<3, Scalar>>(
        [&](const Vector3& position, double)
        {
            abortFlag = ++numCalls > 1000;
            return Scalar(position[0]);
        });
    const ThreadCount team(1);
    const UniformGrid<3> points(lattice({100, 100, 10}, 1.0, 0.0));
    FieldSampler<3, Scalar> sampler(*formula, positionsOf<3>(points));
    std::vector<Scalar> values(points.numPoints());
    std::vector<std::uint8_t> isValid(points.numPoints());
    ProgressCounter progress;
    sampler.valuesAt(0.0, values, isValid, progress, abortFlag);
    EXPECT_EQ(numCalls, 1001U);
}

}
