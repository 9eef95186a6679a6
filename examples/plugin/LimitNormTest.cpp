#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace tavrin;

const volatile bool neverAbort = false;

/// Runs the algorithm as every front end does: load the plug-in, then connect data and set options.
class LimitNormTest : public testing::Test
{
protected:
    static const RegistrationService<AlgorithmFactory>& registry()
    {
        PluginRegistrationService::getInstance().load(LIMIT_NORM_PLUGIN);
        return RegistrationService<AlgorithmFactory>::getInstance();
    }

    /// A function with these values on the points 0, 1, 2, ... of a line.
    static std::shared_ptr<const Function<Vector2>> onLine(std::vector<Vector2> values)
    {
        const auto line = std::make_shared<UniformGrid<1>>(
            UniformGrid<1>::Layout{.size = {values.size(), 1, 1}, .spacing = {1.0}});
        return addData(line, PointSetBase::Points, std::move(values), Precision::Float64, {}, "v");
    }

    std::vector<Vector2> limited(std::vector<Vector2> values)
    {
        run.connect("Field", onLine(std::move(values)));
        run.execute(neverAbort);
        const auto result =
            std::dynamic_pointer_cast<const Function<Vector2>>(run.result("Limited Field"));
        std::vector<Vector2> read;
        for (std::size_t i = 0; i < result->values()->size(); ++i)
            read.push_back((*result->values())[i]);
        return read;
    }

    AlgorithmRun run{registry(), "Example/Limit Norm"};
};

TEST_F(LimitNormTest, ShortensLongValuesAndKeepsTheOthers)
{
    run.setText("Limit", "2.5");
    EXPECT_EQ(limited({{3.0, 4.0}, {0.0, -2.5}, {0.0, 0.0}}),
              (std::vector<Vector2>{{1.5, 2.0}, {0.0, -2.5}, {0.0, 0.0}}));
    EXPECT_EQ(run.infoLog(), "");
}

TEST_F(LimitNormTest, SetsLongValuesToZeroAndCountsThem)
{
    run.setText("Action", "set to zero");
    run.setText("Count", "true");
    EXPECT_EQ(limited({{3.0, 4.0}, {0.6, 0.8}}), (std::vector<Vector2>{{0.0, 0.0}, {0.6, 0.8}}));
    EXPECT_EQ(run.infoLog(), "1 of 2 values are longer\n");
}

TEST_F(LimitNormTest, DoesNotAcceptANegativeLimit)
{
    run.setText("Limit", "-1");
    EXPECT_EQ(limited({{3.0, 4.0}}), (std::vector<Vector2>{{0.0, 0.0}}));
}

}
