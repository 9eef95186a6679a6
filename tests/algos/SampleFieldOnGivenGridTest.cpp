#include "SampleTest.hpp"

#include <support/ThreadCount.hpp>

#include <tavrin/field/SpatialFunctionField.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <atomic>

namespace
{

using namespace support;
using namespace tavrin;

const char* const port = "Sampled Field";

/// A function with the values 0, 1, 2 on the line from 0 to 2, and 10 more at each further time.
std::shared_ptr<const Function<Scalar>> ramp(std::vector<double> times = {})
{
    std::vector<Scalar> values;
    for (std::size_t step = 0; step < std::max<std::size_t>(1, times.size()); ++step)
        for (const double x : {0.0, 1.0, 2.0})
            values.emplace_back(x + 10.0 * static_cast<double>(step));
    return fieldOf<Scalar>(std::move(values), lineOf(3), std::move(times));
}

TEST_F(SampleTest, SaysWhichInputIsMissing)
{
    execute();
    EXPECT_EQ(run.debugLog(), "Input field not set.\nInput domain not set.\naborting.\n");
    connect(ramp(), nullptr);
    execute();
    EXPECT_EQ(run.debugLog(), "Input domain not set.\naborting.\n");
    connect(nullptr, cloudOf<2>({{0.0, 0.0}}));
    execute();
    EXPECT_EQ(run.debugLog(), "Input field not set.\naborting.\n");
}

TEST_F(SampleTest, SamplesByHand)
{
    connect(ramp(), cloudOf<2>({{0.5, 7.0}, {1.75, -7.0}, {2.5, 0.0}}));
    EXPECT_TRUE(execute().ends_with("LIST{0} "));
    EXPECT_EQ(values<Scalar>(), (std::vector<Scalar>{0.5, 1.75, 0.0}));
    const auto function = result<Scalar>();
    EXPECT_EQ(function->timeSteps(), std::vector<double>{0.0});
    EXPECT_EQ(function->domainPart(), PointSetBase::Points);
    EXPECT_EQ(function->values()->precision(), Precision::Float64);
    EXPECT_EQ(*function->validity(), (ValidityMask{1, 1, 0}));
    EXPECT_EQ(run.debugLog(), "Found 1 time values.\n"
                              "1 of 3 samples lie outside the domain of the field.\n"
                              "0 of 1 times lie outside the range of the field.\n");
    EXPECT_EQ(run.results(),
              (ReportValue::Members{
                  {"samples", {{"total", std::size_t{3}}, {"outside", std::size_t{1}}}}}));
}

TEST_F(SampleTest, SamplesStepAfterStep)
{
    connect(ramp({1.0, 3.0}), cloudOf<3>({{0.5, 0.0, 0.0}, {2.0, 0.0, 0.0}}));
    run.setText("Time", "[0:4#0.5]-{1.5,2.5}");
    execute();
    const auto function = result<Scalar>();
    EXPECT_EQ(function->timeSteps(), (std::vector<double>{0.0, 0.5, 1.0, 2.0, 3.0, 3.5, 4.0}));
    EXPECT_EQ(values<Scalar>(), (std::vector<Scalar>{0.0, 0.0, 0.0, 0.0, 0.5, 2.0, 5.5, 7.0, 10.5,
                                                     12.0, 0.0, 0.0, 0.0, 0.0}));
    EXPECT_TRUE(logged("Found 7 time values.\n"));
    EXPECT_TRUE(logged("0 of 6 samples lie outside the domain of the field.\n"
                       "4 of 7 times lie outside the range of the field.\n"));
    EXPECT_EQ(hints(), "8 of 14 samples are outside of the field; they are 0 and marked as not "
                       "valid; 4 of 7 times are outside of its range, 1 to 3\n");
}

TEST_F(SampleTest, WarnsWhenNothingWasMet)
{
    connect(ramp(), cloudOf<2>({{-1.0, 0.0}, {3.0, 2.0}}));
    execute();
    EXPECT_TRUE(hinted("all samples are 0, since no point lies in the domain of the field: "
                       "the field spans [0] to [2], the grid [-1, 0] to [3, 2]\n"));
    EXPECT_EQ(values<Scalar>(), (std::vector<Scalar>{0.0, 0.0}));
    connect(ramp({1.0, 3.0}), cloudOf<2>({{1.0, 0.0}}));
    execute();
    EXPECT_TRUE(hinted("all samples are 0, since no time lies in the range of the field, 1 "
                       "to 3\n"));
}

/// A field whose component c is c + x + 10 y + 100 z + 1000 t.
template<std::size_t D, typename T>
std::shared_ptr<const DataObject> coordinateField()
{
    return std::make_shared<SpatialFunctionField<D, T>>(
        [](const Tensor<double, D>& position, double time)
        {
            T value;
            for (std::size_t c = 0; c < T::size; ++c)
            {
                value[c] = static_cast<double>(c) + 1000.0 * time;
                double factor = 1.0;
                for (const double x : position)
                {
                    value[c] += factor * x;
                    factor *= 10.0;
                }
            }
            return value;
        },
        "coordinates");
}

template<std::size_t D>
using WideVector =
    std::conditional_t<D == 2, Vector242, std::conditional_t<D == 3, Vector375, Scalar>>;

TEST_F(SampleTest, TakesEveryDimensionAndTypeThatIsListed)
{
    using Types = TypeList<Scalar, Vector1, Vector2, Vector3, Matrix1, Matrix2, Matrix3>;
    const std::array grids{
        std::shared_ptr<const DataObject>(cloudOf<2>({{1.0, 2.0}, {3.0, 4.0}})),
        std::shared_ptr<const DataObject>(cloudOf<3>({{1.0, 2.0, 0.0}, {3.0, 4.0, 5.0}}))};
    run.setText("Time", "2");
    std::size_t combinations = 0;
    const auto withDimension = [&]<std::size_t D>()
    {
        const auto expectSampled = [&]<typename T>()
        {
            for (const auto& grid : grids)
            {
                connect(coordinateField<D, T>(), grid);
                execute();
                const auto sampled = values<T>();
                ASSERT_EQ(sampled.size(), 2U);
                const bool hasZ = grid == grids[1] && D == 3;
                const double y = D == 1 ? 0.0 : 10.0;
                for (std::size_t c = 0; c < T::size; ++c)
                {
                    const double first = 2000.0 + static_cast<double>(c);
                    ASSERT_EQ(sampled[0][c], first + 1.0 + y * 2.0);
                    ASSERT_EQ(sampled[1][c], first + 3.0 + y * 4.0 + (hasZ ? 500.0 : 0.0));
                }
                EXPECT_EQ(result<T>()->name(), "coordinates");
                ++combinations;
            }
        };
        visitTypes<Types>(
            [&]<typename T>()
            {
                expectSampled.template operator()<T>();
                return false;
            });
        if constexpr (D > 1)
            expectSampled.template operator()<WideVector<D>>();
    };
    withDimension.template operator()<1>();
    withDimension.template operator()<2>();
    withDimension.template operator()<3>();
    EXPECT_EQ(combinations, 46U);
}

TEST_F(SampleTest, RefusesOtherFields)
{
    const auto grid = cloudOf<2>({{0.0, 0.0}});
    const auto refusal = [&](std::shared_ptr<const DataObject> field)
    {
        connect(std::move(field), grid);
        const std::string text = errorOf<logic_error>([&] { execute(); });
        EXPECT_EQ(text, "unsupported field type occurred.");
        EXPECT_EQ(run.result(port), nullptr);
        const std::string hint = hints();
        const std::string before = "the field given is ";
        return hint.starts_with(before) ? hint.substr(before.size(), hint.find(';') - before.size())
                                        : hint;
    };
    EXPECT_EQ(refusal(coordinateField<3, Vector242>()), "a field of type 242-D Vector in 3-D");
    EXPECT_EQ(refusal(coordinateField<2, Vector375>()), "a field of type 375-D Vector in 2-D");
    EXPECT_EQ(refusal(coordinateField<1, Vector242>()), "a field of type 242-D Vector in 1-D");
    EXPECT_EQ(refusal(coordinateField<3, Vector4>()), "a field of type 4-D Vector in 3-D");
    EXPECT_EQ(refusal(fieldOf<Matrix4>(std::vector<Matrix4>(3), lineOf(3))),
              "values of type 4x4 Matrix on the Points of a 1-D grid");
    EXPECT_EQ(refusal(fieldOf<Scalar>({1.0}, grid)),
              "values of type Scalar on the Points of a point cloud without cells, which is no "
              "field");
    EXPECT_EQ(refusal(std::make_shared<DataObjectBundle>(DataObjectBundle::Members{})), "nothing");
    EXPECT_EQ(refusal(grid), "no values");
}

TEST_F(SampleTest, SamplesABundleAsOneField)
{
    const auto second =
        addData(std::make_shared<UniformGrid<1>>(
                    UniformGrid<1>::Layout{.size = {2, 1, 1}, .origin = {1.0}, .spacing = {3.0}}),
                PointSetBase::Points, std::vector<Scalar>{10.0, 40.0}, Precision::Float64, {});
    connect(std::make_shared<DataObjectBundle>(DataObjectBundle::Members{ramp(), second}),
            cloudOf<2>({{0.5, 0.0}, {1.5, 0.0}, {3.0, 0.0}, {5.0, 0.0}}));
    execute();
    EXPECT_EQ(values<Scalar>(), (std::vector<Scalar>{0.5, 1.5, 30.0, 0.0}));

    // One member that is not a field makes the bundle unsupported, even if it is the last.
    run.connect("Field", std::make_shared<DataObjectBundle>(DataObjectBundle::Members{
                             ramp(), fieldOf<Vector2>(std::vector<Vector2>(3))}));
    EXPECT_EQ(errorOf<logic_error>([&] { execute(); }), "unsupported field type occurred.");
    EXPECT_TRUE(hinted("values of type Scalar on the Points of a 1-D grid; values of type 2-D "
                       "Vector on the Points of a 1-D grid"));
}

TEST_F(SampleTest, PublishesNothingWithoutTimes)
{
    const auto grid = cloudOf<2>({{0.5, 0.0}});
    connect(ramp(), grid);
    execute();
    ASSERT_NE(run.result(port), nullptr);

    const auto complaint = [&](const std::string& times)
    {
        run.setText("Time", times);
        execute();
        EXPECT_EQ(run.result(port), nullptr) << times;
        EXPECT_TRUE(logged("Found 0 time values.\n")) << times;
        EXPECT_TRUE(run.results().empty());
        return run.infoLog();
    };
    const auto quoted = [](const std::string& text)
    { return "ListParser encountered an error: \"" + text + "\".\n"; };
    EXPECT_EQ(complaint("[1:1]"),
              quoted("First number in range must be smaller than the second number."));
    EXPECT_EQ(complaint("{1,2"), quoted("missing closing bracket \"}\"."));
    EXPECT_TRUE(hinted("\"Time\" is no list of numbers: missing closing bracket \"}\"."));
    EXPECT_EQ(complaint("-3,4"), quoted("Binary Operator - requires previous set."));
    // An error that does not end the parsing is reported all the same.
    EXPECT_EQ(complaint("{1}+[2 3]").substr(0, 33), "ListParser encountered an error: ");
    for (const char* const endless : {"[0:1#0]", "[0:1#-1]", "[0:1#1e-300]", "[0:1e300]"})
        EXPECT_NE(complaint(endless), "") << endless;

    EXPECT_EQ(complaint("{}"), "");
    EXPECT_TRUE(hinted("the time list has no values above -1, so nothing is sampled"));
    EXPECT_EQ(complaint("{-2,-1}"), "");
    EXPECT_EQ(complaint(""), "");
    EXPECT_EQ(execute(), "EMPTY\n");
}

TEST_F(SampleTest, LetsABrokenAssertionOfTheParserPass)
{
    connect(ramp(), cloudOf<2>({{0.5, 0.0}}));
    run.setText("Time", "[0:1");
    EXPECT_THROW(execute(), assertion_failed);
}

TEST_F(SampleTest, KeepsAnEarlierResultWhenARunFails)
{
    const auto grid = cloudOf<2>({{0.5, 0.0}});
    connect(ramp(), grid);
    execute();
    const auto earlier = run.result(port);
    ASSERT_NE(earlier, nullptr);
    connect(coordinateField<3, Vector4>(), grid);
    EXPECT_THROW(execute(), logic_error);
    EXPECT_EQ(run.result(port), earlier);
    connect(ramp(), grid);
    run.setText("Time", "[0:1");
    EXPECT_THROW(execute(), assertion_failed);
    EXPECT_EQ(run.result(port), earlier);
    // An abort and a missing input withdraw it.
    run.setText("Time", "0");
    execute(alreadyAborted);
    EXPECT_EQ(run.result(port), nullptr);
    execute();
    EXPECT_NE(run.result(port), nullptr);
    connect(nullptr, grid);
    execute();
    EXPECT_EQ(run.result(port), nullptr);
}

TEST_F(SampleTest, RefusesWhatDoesNotFitInMemory)
{
    const auto grid = std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {1000000, 100000, 1000}, .spacing = {1.0, 1.0, 1.0}});
    connect(ramp(), grid);
    EXPECT_EQ(errorOf<runtime_error>([&] { execute(); }).substr(0, 75),
              "sampling 100000000000000 points at 1 time takes 900000000000000 bytes, and ");
    run.setText("Time", "[0:5]");
    execute();
    EXPECT_EQ(run.infoLog(), "ListParser encountered an error: \"The sets have more than 1 "
                             "values.\".\n");
    EXPECT_EQ(run.result(port), nullptr);
}

TEST_F(SampleTest, TakesAGridWithoutPoints)
{
    connect(ramp(), cloudOf<3>({}));
    run.setText("Time", "0,1");
    execute();
    EXPECT_TRUE(values<Scalar>().empty());
    EXPECT_EQ(result<Scalar>()->numTimeSteps(), 2U);
    EXPECT_EQ(hints(), "");
}

TEST_F(SampleTest, EndsSoonAndClearsItsResultWhenAborted)
{
    volatile bool abortFlag = false;
    std::atomic<std::size_t> calls = 0;
    const auto field = std::make_shared<SpatialFunctionField<2, Scalar>>(
        [&](const Vector2&, double)
        {
            abortFlag = ++calls >= 1000 || abortFlag;
            return Scalar(1.0);
        });
    connect(field, std::make_shared<UniformGrid<2>>(
                       UniformGrid<2>::Layout{.size = {100, 100, 1}, .spacing = {1.0, 1.0}}));
    run.setText("Time", "[0:100000]");
    for (const int threads : {1, 3})
    {
        const ThreadCount threadCount(threads);
        abortFlag = false;
        calls = 0;
        execute(abortFlag);
        EXPECT_EQ(run.result(port), nullptr);
        EXPECT_TRUE(run.results().empty());
        // Every other thread may make one more call.
        EXPECT_LE(calls, 1000U + static_cast<std::size_t>(threads));
    }
}

/// A series that counts the steps that are in memory at the same time.
class CountedSeries
{
public:
    static constexpr std::size_t numSteps = 40;

    explicit CountedSeries(std::size_t brokenStep = numSteps) : mBrokenStep(brokenStep) {}

    std::shared_ptr<const FunctionBase> function()
    {
        const auto load = [this](std::size_t step) -> std::shared_ptr<const ValueArray<Scalar>>
        {
            if (step == mBrokenStep)
                throw runtime_error("step " + std::to_string(step) + " is broken");
            ++mLoads;
            mMost = std::max(mMost, ++mLive);
            return {new DefaultValueArray<Scalar>(std::vector<Scalar>(3, static_cast<double>(step)),
                                                  Precision::Float64),
                    [this](const ValueArray<Scalar>* array)
                    {
                        delete array;
                        --mLive;
                    }};
        };
        std::vector<double> times(numSteps);
        for (std::size_t i = 0; i < numSteps; ++i)
            times[i] = static_cast<double>(i);
        return std::make_shared<const Function<Scalar>>(
            lineOf(3), PointSetBase::Points,
            std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, numSteps, 3, load),
            times);
    }

    int most() const { return mMost; }
    int loads() const { return mLoads; }

private:
    std::size_t mBrokenStep;
    // The series loads steps under a lock, but releases them without one.
    std::atomic<int> mLive = 0;
    int mMost = 0;
    int mLoads = 0;
};

TEST_F(SampleTest, HoldsTwoStepsOfASeriesWhateverTheNumberOfThreads)
{
    const auto grid = std::make_shared<UniformGrid<2>>(
        UniformGrid<2>::Layout{.size = {50, 1, 1}, .spacing = {0.05, 0.0}});
    for (const int threads : {1, 2, 3, 8})
        for (const char* const times : {"[0:39#0.5]", "[0.25:39#2.75]", "0.5,3,7.5,38.5"})
        {
            const ThreadCount threadCount(threads);
            CountedSeries series;
            connect(series.function(), grid);
            run.setText("Time", times);
            execute();
            const auto function = result<Scalar>();
            const auto sampled = values<Scalar>();
            for (std::size_t step = 0; step < function->numTimeSteps(); ++step)
                EXPECT_NEAR(sampled[step * 50 + 7][0], function->timeSteps()[step], 1e-12);
            EXPECT_LE(series.most(), 2) << threads << " threads";
            EXPECT_LE(series.loads(), 40);
            connect(nullptr, nullptr);
        }
}

TEST_F(SampleTest, PassesOnThatAStepCannotBeLoaded)
{
    const auto grid = std::make_shared<UniformGrid<2>>(
        UniformGrid<2>::Layout{.size = {5000, 1, 1}, .spacing = {0.0005, 0.0}});
    for (const int threads : {1, 2, 8})
    {
        const ThreadCount threadCount(threads);
        CountedSeries series(17);
        connect(series.function(), grid);
        run.setText("Time", "[0:39]");
        EXPECT_EQ(errorOf<runtime_error>([&] { execute(); }), "step 17 is broken");
        EXPECT_EQ(run.result(port), nullptr);
        connect(nullptr, nullptr);
    }
}

}
