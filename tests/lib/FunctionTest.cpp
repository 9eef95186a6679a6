#include <support/ThreadCount.hpp>
#include <support/abortFlags.hpp>
#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/function/mapValues.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;

std::shared_ptr<const Function<Scalar>> unsteady()
{
    return addData(lineOf(3), PointSetBase::Points,
                   std::vector<Scalar>{0.0, 1.0, 2.0, 10.0, 11.0, 12.0, 30.0, 31.0, 32.0},
                   Precision::Float64, {1.0, 2.0, 4.0}, "temperature");
}

TEST(AddData, TakesVectorsOfAnyAllocatorWithoutACopy)
{
    LargeVector<Vector2> values(3, Vector2(1.0, 2.0));
    const Vector2* const place = values.data();
    const auto function =
        addData(lineOf(3), PointSetBase::Points, std::move(values), Precision::Float64, {});
    std::array<Vector2, 1> scratch;
    EXPECT_EQ(function->values()->read(0, scratch).data(), place);
    EXPECT_EQ(function->timeBehavior(), TimeBehavior::Steady);
    EXPECT_EQ(function->numTimeSteps(), 1U);
}

TEST(AddData, RefusesWhatDoesNotFit)
{
    const auto message = [](std::shared_ptr<const Domain> domain, const DomainPart& part,
                            std::size_t count, std::vector<double> times)
    {
        return errorOf(
            [&] { addData(domain, part, std::vector<Scalar>(count), Precision::Float64, times); });
    };
    const std::string misfit = "The data does not fit onto the specified domain";
    EXPECT_EQ(message(nullptr, PointSetBase::Points, 3, {}),
              "Data can't be registered to non-existent domains.");
    EXPECT_EQ(message(lineOf(3), PointSetBase::Points, 2, {}), misfit);
    EXPECT_EQ(message(lineOf(3), PointSetBase::Points, 3, {0.0, 1.0}), misfit);
    EXPECT_EQ(message(lineOf(3), detail::Cells, 3, {}), misfit);
    EXPECT_EQ(message(lineOf(3), detail::Cells, 2, {}), "no exception");
    EXPECT_EQ(errorOf([] { Function<Scalar>(lineOf(3), PointSetBase::Points, nullptr, {}); }),
              "a function needs an array of values");
    EXPECT_EQ(message(lineOf(3), PointSetBase::Points, 6, {1.0, 1.0}),
              "the time steps of a function must ascend");
    EXPECT_EQ(message(lineOf(3), PointSetBase::Points, 6, {0.0, NAN}),
              "the time steps of a function must ascend");
}

TEST(Function, DescribesItself)
{
    EXPECT_EQ(unsteady()->getInfoStrings(),
              (std::vector<std::string>{"values: Scalar, stored as float64",
                                        "defined on: 3 Points (point-based)",
                                        "time: 3 time steps from 1 to 4"}));
    EXPECT_EQ(valueTypeName<Matrix3>(), "3x3 Matrix");
    EXPECT_EQ(valueTypeName<Vector242>(), "242-D Vector");
    EXPECT_EQ((valueTypeName<Tensor<double, 2, 3, 4>>()), "2x3x4 Tensor");
}

TEST(DiscreteFunctionEvaluator, ReadsTheFirstStepUnlessToldOtherwise)
{
    const auto function = unsteady();
    EXPECT_EQ(function->makeDiscreteEvaluator().size(), 3U);
    EXPECT_EQ(function->makeDiscreteEvaluator().value(1), Scalar(1.0));
    EXPECT_EQ(function->makeDiscreteEvaluator(2).value(1), Scalar(31.0));
}

TEST(FunctionEvaluator, InterpolatesBetweenSteps)
{
    const auto function = unsteady();
    auto evaluator = function->makeEvaluator();
    EXPECT_TRUE(evaluator.isValid());
    EXPECT_EQ(evaluator.value(2), Scalar(2.0));
    EXPECT_EQ(evaluator.firstTime(), 1.0);
    EXPECT_EQ(evaluator.lastTime(), 4.0);
    const auto at = [&](double time)
    {
        evaluator.reset(time);
        return evaluator.value(0)[0];
    };
    EXPECT_EQ(at(4.0), 30.0);
    EXPECT_EQ(at(2.0), 10.0);
    EXPECT_EQ(at(3.0), 20.0);
    EXPECT_EQ(at(1.5), 5.0);
    EXPECT_TRUE(evaluator.isValid());
    // Outside of the range it is invalid and stays at the last time.
    EXPECT_EQ(at(4.0000001), 5.0);
    EXPECT_FALSE(evaluator.isValid());
    EXPECT_EQ(at(NAN), 5.0);
    EXPECT_FALSE(evaluator.isValid());
    EXPECT_EQ(at(1.0), 0.0);
    EXPECT_TRUE(evaluator.isValid());
}

TEST(FunctionEvaluator, OfASteadyFunctionIsValidAtEveryTime)
{
    const auto function = addData(lineOf(3), PointSetBase::Points,
                                  std::vector<Scalar>{1.0, 2.0, 3.0}, Precision::Float64, {5.0});
    auto evaluator = function->makeEvaluator();
    evaluator.reset(-1e9);
    EXPECT_TRUE(evaluator.isValid());
    EXPECT_EQ(evaluator.value(2), Scalar(3.0));
}

TEST(VisitFunction, SaysWhetherATypeMatched)
{
    const auto function = unsteady();
    std::string found;
    const auto remember = [&]<typename T>(const Function<T>&) { found = valueTypeName<T>(); };
    EXPECT_FALSE((visitFunction<TypeList<Vector2, Matrix2>>(*function, remember)));
    EXPECT_EQ(found, "");
    EXPECT_TRUE((visitFunction<TypeList<Vector2, Scalar>>(*function, remember)));
    EXPECT_EQ(found, "Scalar");
}

TEST(DefinedOn, AsksForTheDomainAndThePart)
{
    const auto function = unsteady();
    EXPECT_TRUE((definedOn<TypeList<PointSet<2>, PointSet<1>>>(Domain::any)(*function)));
    EXPECT_TRUE((definedOn<TypeList<PointSet<1>>>(PointSetBase::Points)(*function)));
    EXPECT_FALSE((definedOn<TypeList<PointSet<1>>>(detail::Cells)(*function)));
    EXPECT_FALSE((definedOn<TypeList<PointSet<2>>>(Domain::any)(*function)));
    EXPECT_FALSE((definedOn<TypeList<PointSet<1>>>(Domain::any)(*function->domain())));
}

/// Values 0, 1, 2, ... of an array that is larger than several blocks.
std::shared_ptr<const ValueArray<Scalar>> manyValues(std::size_t count)
{
    std::vector<Scalar> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<double>(i);
    return stored(std::move(values));
}

TEST(MapValues, GivesTheSameForEveryNumberOfThreads)
{
    const std::size_t count = 10007;
    const auto values = manyValues(count);
    for (const int threads : {1, 2, 3, 8})
    {
        const ThreadCount threadCount(threads);
        volatile unsigned long progress = 0;
        const auto result = mapValues<Vector2>(
            *values, *values,
            [](const Scalar& a, const Scalar& b) { return Vector2(std::sqrt(a[0]), b[0] + 1.0); },
            progress, neverAbort);
        ASSERT_EQ(result.size(), count);
        EXPECT_EQ(progress, count);
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(result[i],
                      Vector2(std::sqrt(static_cast<double>(i)), static_cast<double>(i) + 1.0));
    }
}

TEST(MapValues, GoesThroughASeriesStepByStep)
{
    std::vector<std::size_t> loaded;
    const std::size_t perStep = 5000;
    const auto series = std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, 5, perStep,
                                                                   [&](std::size_t step)
                                                                   {
                                                                       loaded.push_back(step);
                                                                       return manyValues(perStep);
                                                                   });
    volatile unsigned long progress = 0;
    const auto result = mapValues<Scalar>(
        *series, [](const Scalar& value) { return value * 2.0; }, progress, neverAbort);
    EXPECT_EQ(result.back(), Scalar(2.0 * (perStep - 1)));
    EXPECT_EQ(loaded, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST(MapValues, PassesOnWhatLoadingThrowsAndStopsWhenAsked)
{
    const auto broken = std::make_shared<SeriesValueArray<Scalar>>(
        Precision::Float64, 2, 10,
        [](std::size_t) -> std::shared_ptr<const ValueArray<Scalar>>
        { throw runtime_error("gone"); });
    const auto twice = [](const Scalar& value) { return value * 2.0; };
    volatile unsigned long progress = 0;
    volatile bool abortFlag = false;
    EXPECT_THROW(mapValues<Scalar>(*broken, twice, progress, abortFlag), runtime_error);
    abortFlag = true;
    mapValues<Scalar>(*manyValues(100000), twice, progress, abortFlag);
    EXPECT_EQ(progress, 0U);
}

}
