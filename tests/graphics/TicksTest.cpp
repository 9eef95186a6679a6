#include "../../host/graphics/painter/Ticks.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using tavrin::graphics::painter::Ticks;
using Texts = std::vector<std::string>;

TEST(Ticks, AreRoundNumbersWithinTheLimits)
{
    EXPECT_EQ(Ticks::between(0.0, 1.0, 5).labels,
              (Texts{"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}));
    EXPECT_EQ(Ticks::between(-3.0, 17.0, 5).labels, (Texts{"0", "5", "10", "15"}));
    EXPECT_EQ(Ticks::between(1.0, -1.0, 4).labels,
              (Texts{"\u22121.0", "\u22120.5", "0.0", "0.5", "1.0"}));
    EXPECT_EQ(Ticks::between(0.0, 1.0, 5).titleSuffix, "");
    EXPECT_EQ(Ticks::between(-1.6, 1.6, 2).labels, (Texts{"\u22121", "0", "1"}));
}

TEST(Ticks, LeaveToTheTitleWhatAllHaveInCommon)
{
    const Ticks small = Ticks::between(0.0, 4e-7, 4);
    EXPECT_EQ(small.labels, (Texts{"0", "1", "2", "3", "4"}));
    EXPECT_EQ(small.titleSuffix, " (\u00d710\u207b\u2077)");

    const Ticks far = Ticks::between(1e7 + 1.0, 1e7 + 2.0, 2);
    EXPECT_EQ(far.labels, (Texts{"0.0", "0.5", "1.0"}));
    EXPECT_EQ(far.titleSuffix, " \u2212 10000001");
    EXPECT_DOUBLE_EQ(far.values[1], 1e7 + 1.5);
}

TEST(Ticks, ShareAFormatWithOthers)
{
    const Ticks ticks = Ticks::between(0.0, 10000.0, 2, {.exponent = 5, .leastDecimals = 0});
    EXPECT_EQ(ticks.labels, (Texts{"0.00", "0.05", "0.10"}));
    EXPECT_EQ(ticks.titleSuffix, " (\u00d710\u2075)");
    EXPECT_EQ(ticks.decimals, 2);
    EXPECT_EQ(Ticks::between(0.0, 2.0, 2, {.exponent = 0, .leastDecimals = 1}).labels,
              (Texts{"0.0", "1.0", "2.0"}));
}

TEST(Ticks, SurviveOddLimits)
{
    EXPECT_EQ(Ticks::between(2.5, 2.5, 5).labels, (Texts{"2.5"}));
    EXPECT_TRUE(Ticks::between(NAN, 1.0, 5).values.empty());
    EXPECT_TRUE(Ticks::between(0.0, INFINITY, 5).values.empty());
    EXPECT_TRUE(Ticks::between(-1.7e308, 1.7e308, 5).values.empty());
    for (double scale = 1e-290; scale < 1e290; scale *= 1e10)
        for (const double low : {0.0, -1.0, 0.3, 99999.0})
        {
            const Ticks ticks = Ticks::between(low * scale, (low + 1.7) * scale, 6);
            EXPECT_GE(ticks.values.size(), 2U) << scale;
            EXPECT_LE(ticks.values.size(), 7U) << scale;
            EXPECT_EQ(ticks.values.size(), ticks.labels.size());
            for (std::size_t i = 1; i < ticks.values.size(); ++i)
            {
                EXPECT_GT(ticks.values[i], ticks.values[i - 1]);
                EXPECT_NE(ticks.labels[i], ticks.labels[i - 1]) << scale << " " << low;
            }
        }
}

}
