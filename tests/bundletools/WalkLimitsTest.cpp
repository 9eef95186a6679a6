#include "ParserRun.hpp"

#include <BundleTools/WalkLimits.hpp>

#include <gtest/gtest.h>

#include <chrono>

namespace
{

tavrin::CollectedValues<double> collected(const std::string& text, std::size_t maximum = 1'000,
                                          std::size_t maximumSteps = 1'000'000)
{
    Parser parser(maximumSteps);
    parseQuietly(parser, text);
    auto result = tavrin::collectValues(parser, maximum);
    EXPECT_TRUE(result.values.empty() || result.errorText.empty());
    return result;
}

TEST(WalkLimits, CollectsAllValues)
{
    EXPECT_EQ(collected("[0:1#0.25]-{0.5}").values, Values({0, 0.25, 0.75, 1}));
    EXPECT_EQ(collected("[0:9]", 10).values.size(), 10);
    EXPECT_EQ(collected("{}", 0).errorText, "");
    // Adding the step reaches the next number only because the sum is rounded up.
    EXPECT_EQ(collected("[1e16:10000000000000006#1.5]").values.size(), 4);
}

TEST(WalkLimits, PassesOnTheErrorOfTheParser)
{
    EXPECT_EQ(collected("{1").errorText, "missing closing bracket \"}\".");
    EXPECT_EQ(collected("{1}{2}+[").errorText, "expected delimiter \":\" between \"[\" and \"]\".");
}

TEST(WalkLimits, RefusesWalksOfRangesThatNeverEnd)
{
    for (const char* const text : {"[0:1#0]", "[-5:1#0]", "[0:1#-1]", "[0:1#]", "{1}-[0:1#0]",
                                   "{5}&[2:3#-0]", "[0:1#-1e999]"})
        EXPECT_EQ(collected(text).errorText, "The step of a range must be greater than zero.")
            << text;
    for (const char* const text :
         {"[0:1e300#1e-300]", "[0:1e16]", "[1e15:1e16#1e-17]", "{1e15}&[0:1e300]"})
        EXPECT_EQ(collected(text).errorText,
                  "The step of a range is too small to change its values.")
            << text;
    for (const char* const text : {"[0:1e999]", "[-1e999:1]", "[0:1e999#1e999]", "[0:1e999#1e306]",
                                   "{1e999}&[0:1e999]", "[0:1e999]-{1}", "[0:1e999]&{}+{5}"})
        EXPECT_EQ(collected(text).errorText, "A range with an infinite start or end never ends.")
            << text;
}

TEST(WalkLimits, AcceptsNumbersThatAreTooLargeAsInfinity)
{
    EXPECT_EQ(collected("1,1e999").values, Values({1, infinity}));
    EXPECT_EQ(collected("{-1e999,2}+{1e999}").values, Values({2, infinity}));
    EXPECT_EQ(collected("{1,1e999}-{1e999}").values, Values({1}));
    EXPECT_EQ(collected("{1,1e999}&{1,1e999}").values, Values({1, infinity}));
    EXPECT_EQ(collected("[0:1#1e999]").values, Values({0}));
}

/// Long or endless sets whose values are not needed.
TEST(WalkLimits, EndsAnIntersectionWithItsFirstOperandToEnd)
{
    for (const char* const text :
         {"[0:100000000]&{1}", "{1}&[0:100000000]", "[0:1e999]&{1}", "{1}&[0:1e999]",
          "[0:1e16]&{1}", "[0:100000000]&[1:2#1e8]", "{1}&[1:2#0]", "[0:1e15]&{1}&{0,1}",
          "[0:1e15]&{1}-{2}", "[0:1e15]&{1}+{}", "{1}-{}&[0:1e15]", "[0:1e15]&{} {1}"})
        EXPECT_EQ(collected(text).values, Values({1})) << text;
    EXPECT_EQ(collected("[0:1e15]&{1}+{2,3}").values, Values({1, 2, 3}));
    EXPECT_EQ(collected("[0:1e15]&{}").errorText, "");
    // A union begins with the value that its operand ended on.
    EXPECT_EQ(collected("[0:3]&{}+{5}").values, Values({4, 5}));
    EXPECT_EQ(collected("[0:9]&[-5:-2#10]+{7}").values, Values({5, 7}));
    EXPECT_EQ(collected("[0:9]&[-5:-2#10]-{5}+{7}").values, Values({5, 7}));
}

TEST(WalkLimits, RefusesTooManyValues)
{
    EXPECT_EQ(collected("[0:10]", 10).errorText, "The sets have more than 10 values.");
    EXPECT_EQ(collected("[0:1e15]{1}", 1'000).errorText, "The sets have more than 1000 values.");
    EXPECT_EQ(collected("0", 0).errorText, "The sets have more than 0 values.");
}

TEST(WalkLimits, RefusesWalksThatTakeTooLong)
{
    // The steps are used up at different points: making a set, at the first value, at a later value.
    for (const char* const text :
         {"{1e15}&[0:1e15#0.5]", "[0:1e15#0.5]&{1e15}", "{1e15}-[0:1e15#0.5]", "[0:1e15]&{}+{5}",
          "[-1e15:5]", "[0:1e15]&{1e14}", "[0:1e15]-[1:1e15]"})
        EXPECT_EQ(collected(text).errorText, "Walking the sets takes more than 1000000 steps.")
            << text;

    std::string many;
    for (int i = 0; i < 2'000; ++i)
        many += "{" + std::to_string(i) + "}";
    EXPECT_EQ(collected(many, 2'000).errorText, "Walking the sets takes more than 1000000 steps.");
}

TEST(WalkLimits, EndsSoonByDefault)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(collected("{1e15}&[0:1e15]", 1'000, Parser::defaultSteps).errorText,
              "Walking the sets takes more than 50000000 steps.");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

}
