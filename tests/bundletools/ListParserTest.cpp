#include "ParserRun.hpp"

#include <support/errorOf.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <numeric>
#include <random>

namespace
{

using namespace std::string_literals;

std::string traceOf(const std::string& text)
{
    std::ostringstream trace;
    const RedirectedOutput output(trace.rdbuf());
    Parser parser;
    parser.parse(text);
    return trace.str();
}

/// The output of `print` of all sets after a text was parsed.
std::string printed(const std::string& text)
{
    Parser parser;
    parseQuietly(parser, text);
    std::ostringstream out;
    for (const auto& set : parser.stack())
        set->print(out);
    return out.str();
}

/// The error text, after a mark if the text was accepted nevertheless.
std::string errorOf(const std::string& text)
{
    Parser parser;
    const bool accepted = parseQuietly(parser, text);
    return (accepted ? "accepted: " : "") + parser.errorText();
}

std::string repeated(const std::string& part, std::size_t times)
{
    std::string text;
    for (std::size_t i = 0; i < times; ++i)
        text += part;
    return text;
}

TEST(ListParser, ReadsPlainNumbers)
{
    EXPECT_EQ(walked("0.0"), Values({0}));
    EXPECT_EQ(walked("3,1,2,3"), Values({1, 2, 3}));
    EXPECT_EQ(walked("1,,2"), Values({1, 2}));
    EXPECT_EQ(walked("1,"), Values({1}));
    EXPECT_EQ(walked("5,x"), Values({0, 5}));
    EXPECT_EQ(walked("1,2+{3}"), Values({1, 2}));
    EXPECT_EQ(walked("7,-1,-0.999,1e2x,1e"), Values({-0.999, 0, 7, 100}));
    EXPECT_EQ(walked("0,1e400"), Values({0, infinity}));
}

TEST(ListParser, ReadsRanges)
{
    EXPECT_EQ(walked("[0:1#0.25]"), Values({0, 0.25, 0.5, 0.75, 1}));
    EXPECT_EQ(walked("[0:1]"), Values({0, 1}));
    EXPECT_EQ(walked("[0:2]#0.5"), Values({0, 1, 2}));
    EXPECT_EQ(walked("[ 0.5 , : 2x ]"), Values({0.5, 1.5}));
    EXPECT_EQ(walked("[:1#1]"), Values({0, 1}));
    EXPECT_EQ(walked("[0:1#0.1]")[3], 0.1 + 0.1 + 0.1) << "values come from repeated addition";
}

TEST(ListParser, NeverYieldsValuesAtOrBelowMinusOne)
{
    EXPECT_EQ(walked("[-3:2]"), Values({0, 1, 2}));
    EXPECT_EQ(walked("{-1,-0.75}"), Values({-0.75}));
    EXPECT_EQ(walked("[-5:-2]"), Values());
}

TEST(ListParser, CombinesSetsFromLeftToRight)
{
    EXPECT_EQ(walked("[0:10]-{3,4}"), Values({0, 1, 2, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(walked("[0:4]&{1.5,2}"), Values({2}));
    EXPECT_EQ(walked("{1,3}+{2}"), Values({1, 2, 3}));
    EXPECT_EQ(walked("{1,2}-{2}+{2}"), Values({1, 2}));
    EXPECT_EQ(walked("{1,2}+{2}-{2}"), Values({1}));
    EXPECT_EQ(walked("{1,2}+[0:3]&{2,3}"), Values({2, 3}));
    EXPECT_EQ(walked("{0.5,2,3}-[0:1]"), Values({0.5, 2, 3}));
    EXPECT_EQ(walked("[0:1]-{0.5,2}"), Values({0, 1}));
    EXPECT_EQ(walked("[0:3]-[0:3]"), Values());
}

TEST(ListParser, SetsSideBySideAreUnited)
{
    EXPECT_EQ(walked("{1,2} {2,5}"), Values({1, 2, 5}));
    EXPECT_EQ(walked("{1,2}[5:6]"), Values({1, 2, 5, 6}));
    EXPECT_EQ(walked("; {4} or {1,9} 7"), Values({1, 4, 9}));
    // Without an operand the operator takes the two sets before it, and the blank is skipped.
    EXPECT_EQ(walked("{1,2}{2,5}- {7}"), Values({1, 7}));
    EXPECT_EQ(walked("{9}{1,2}{2,5}-"), Values({1, 9}));
    EXPECT_EQ(walked("{1}{2}+-"), Values({1, 2}));
}

TEST(ListParser, EmptySetsYieldNothing)
{
    EXPECT_EQ(walked(""), Values());
    EXPECT_EQ(walked("no sets"), Values());
    EXPECT_EQ(walked("{}"), Values());
    EXPECT_EQ(walked("{}+{5}"), Values({5}));
    EXPECT_EQ(walked("{5}+{}"), Values({5}));
    EXPECT_EQ(walked("{}+{}"), Values());
    EXPECT_EQ(walked("{5}-{}"), Values({5}));
    EXPECT_EQ(walked("{}-{5}"), Values());
    EXPECT_EQ(walked("{1}&{0}+{5}"), Values({5}));
}

TEST(ListParser, IntersectionsCatchUpOnce)
{
    EXPECT_EQ(walked("{1,3,5}&{2,5}"), Values({3, 5}));
    EXPECT_EQ(walked("{2,4}&{1,3,5}"), Values({4}));
}

TEST(ListParser, IntersectionsComparePreviousValuesAsIntegers)
{
    EXPECT_EQ(walked("{-0.5,0,1}&{-0.5,0,1}"), Values({-0.5, 1}));
    EXPECT_EQ(walked("{-0.5,0.5,1}&{-0.5,0.5,1}"), Values({-0.5, 0.5, 1}));
    EXPECT_EQ(walked("{1e300,2e300}&{1e300,2e300}"), Values({1e300, 2e300}));

    // Beyond 32 bits the previous value counts as the nearest integer.
    Parser::Stack stack;
    Parser::addList(stack, {-3e9, -2147483648.0, 7});
    Parser::addList(stack, {-3e9, -2147483648.0, 7});
    tavrin::sets::StepBudget steps(100);
    Parser::Intersection intersection(std::move(stack[0]), std::move(stack[1]), steps);
    EXPECT_EQ(intersection.value(), -3e9);
    intersection.next();
    EXPECT_EQ(intersection.value(), 7);
}

TEST(ListParser, OperatorsAgreeWithSetsOfNumbers)
{
    std::mt19937 random(7);
    for (int run = 0; run < 300; ++run)
    {
        Values a;
        Values b;
        for (int i = 0; i < 40; ++i)
        {
            if (random() % 2 == 0)
                a.push_back(i);
            if (random() % 3 == 0)
                b.push_back(i);
        }
        const auto listed = [](const Values& values)
        {
            std::ostringstream text;
            text << "{";
            for (const double value : values)
                text << value << ",";
            text << "}";
            return text.str();
        };
        Values both;
        Values all;
        Values onlyA;
        std::ranges::set_intersection(a, b, std::back_inserter(both));
        std::ranges::set_union(a, b, std::back_inserter(all));
        std::ranges::set_difference(a, b, std::back_inserter(onlyA));

        EXPECT_EQ(walked(listed(a) + "+" + listed(b)), all);
        EXPECT_EQ(walked(listed(a) + listed(b)), all);
        EXPECT_EQ(walked(listed(a) + "-" + listed(b)), onlyA);
        const Values intersection = walked(listed(a) + "&" + listed(b));
        EXPECT_TRUE(std::ranges::includes(intersection, both));
        EXPECT_TRUE(std::ranges::includes(a, intersection));
    }
}

TEST(ListParser, RefusesWrongTexts)
{
    EXPECT_EQ(errorOf("+{1}"), "Binary Operator + requires previous set.");
    EXPECT_EQ(errorOf("&{1}"), "Binary Operator & requires previous set.");
    EXPECT_EQ(errorOf("-3,4"), "Binary Operator - requires previous set.");
    EXPECT_EQ(errorOf("{1,2"), "missing closing bracket \"}\".");
    EXPECT_EQ(errorOf("[0 5]"), "expected delimiter \":\" between \"[\" and \"]\".");
    EXPECT_EQ(errorOf("[0 5] [1:2]"), "expected delimiter \":\" between \"[\" and \"]\".");
    EXPECT_EQ(errorOf("["), "expected delimiter \":\" between \"[\" and \"]\".");
    for (const char* const range : {"[1:1]", "[2:1]", "[1:]", "[x:y]"})
        EXPECT_EQ(errorOf(range), "First number in range must be smaller than the second number.");
}

TEST(ListParser, RefusesOperatorsWithoutTwoSets)
{
    EXPECT_EQ(errorOf("{1}+"), "Binary Operator + requires previous set.");
    EXPECT_EQ(errorOf("{1}& {2}"), "Binary Operator & requires previous set.");
    EXPECT_EQ(errorOf("{1}--{2}"), "Binary Operator - requires previous set.");
    EXPECT_EQ(errorOf("{1}-[2:2]"),
              "First number in range must be smaller than the second number.");
}

TEST(ListParser, WrongOperandsActLate)
{
    const std::string wrongRange = "First number in range must be smaller than the second number.";
    EXPECT_EQ(errorOf("{1}{2}+[3:3]{4}"), wrongRange);
    EXPECT_EQ(printed("{1}{2}+[3:3]{4}"), "UNION( LIST{1} ,LIST{2} ) ");
    // Only a character that does not begin a set ends the parsing: here the text ends before.
    EXPECT_EQ(errorOf("{1}{2}+["), "accepted: expected delimiter \":\" between \"[\" and \"]\".");
    EXPECT_EQ(errorOf("{1}{2}+[{"), "missing closing bracket \"}\".");
    EXPECT_EQ(printed("{1}{2}+[{3} {4}"), "UNION( LIST{1} ,LIST{2} ) LIST{3} ");
}

TEST(ListParser, AssertionsTellWhereTheyStand)
{
    const auto assertionOf = [](const auto& action)
    {
        const RedirectedOutput output;
        return support::errorOf<tavrin::assertion_failed>(action);
    };
    const auto expected = [](const std::string& check, int line)
    {
        return std::string(
            tavrin::assertion_failed(check, "BundleTools/ListParser",
                                     "toolboxes/future/Field/algos/SampleFieldOnGivenGrid", line)
                .what());
    };
    Parser parser;
    Parser::Stack stack;
    const auto calling = [&](auto member, const std::string& text)
    {
        return assertionOf(
            [&]
            {
                const char* cursor = text.c_str();
                (parser.*member)(stack, cursor, cursor + text.size());
            });
    };
    EXPECT_EQ(calling(&Parser::parseRange, ""), expected("Invalid range.: start < end", 460));
    EXPECT_EQ(calling(&Parser::parseRange, "{1}"),
              expected("Invalid first character.: start[0] == '['", 461));
    EXPECT_EQ(calling(&Parser::parseList, ""), expected("Invalid range!: start < end", 496));
    EXPECT_EQ(calling(&Parser::parseList, "[1:2]"),
              expected("Invalid first character.: start[0] == '{'", 497));
    EXPECT_EQ(calling(&Parser::parseNumbers, ""), expected("Invalid range!: start < end", 536));
    EXPECT_EQ(calling(&Parser::parseBasicSet, ""), "no exception");

    const std::string unclosed = expected("Invalid last character.: start[0] == ']'", 587);
    EXPECT_EQ(assertionOf([&] { parser.parse("[0:5"); }), unclosed);
    EXPECT_EQ(assertionOf([&] { parser.parse("{1}+[0:5#1"); }), unclosed);
    EXPECT_EQ(assertionOf([&] { parser.parse("[0 5 {1} :9"); }), unclosed);
    EXPECT_FALSE(parser.valid());
}

TEST(ListParser, TracesOnStandardOutput)
{
    EXPECT_EQ(traceOf("1,,2x"), "1,,2x -> 1\n"
                                "2x -> 2\n");
    EXPECT_EQ(traceOf("[0:1#0.5];"), "Parsing at position 0\n"
                                     "0.5]; -> 0.5\n"
                                     "0:1#0.5]; -> 0\n"
                                     "1#0.5]; -> 1\n"
                                     "added range 0 1 0.5\n"
                                     "]; \n"
                                     "8\n"
                                     "Parsing at position 8\n"
                                     "Parsing at position 9\n");
    EXPECT_EQ(traceOf("{1}-{2,}"), "Parsing at position 0\n"
                                   "1}-{2,} -> 1\n"
                                   "2\n"
                                   "Parsing at position 2\n"
                                   "Parsing at position 3\n"
                                   "2,} -> 2\n");
    EXPECT_EQ(traceOf("[1#2]"), "Parsing at position 0\n"
                                "2] -> 2\n");
    EXPECT_EQ(traceOf("+"), "Parsing at position 0\n");
    EXPECT_EQ(traceOf(""), "");
}

TEST(ListParser, PrintsWhereTheWalkStands)
{
    EXPECT_EQ(printed("{3,1,1}"), "LIST{1,3} ");
    EXPECT_EQ(printed("{}"), "LIST{} ");
    EXPECT_EQ(printed("[-3:2.5]"), "RANGE[ 0:2.5#1 ] ");
    EXPECT_EQ(printed("[0:2]-{0}&{1}+[4:5#0.5]"),
              "UNION( INTERSECTION( DIFFERENCE( RANGE[ 1:2#1 ] ,LIST{0} ) ,LIST{1} ) "
              ",RANGE[ 4:5#0.5 ] ) ");
    // Where an intersection has ended, its first operand has caught up with the second one.
    EXPECT_EQ(printed("[0:10]&{}"), "INTERSECTION( RANGE[ 11:10#1 ] ,LIST{} ) ");
    EXPECT_EQ(printed("[0:10]&[-5:-2#10]-{3}"),
              "DIFFERENCE( INTERSECTION( RANGE[ 5:10#1 ] ,RANGE[ 5:-2#10 ] ) ,LIST{3} ) ");
}

TEST(ListParser, StartsAnewWithEachText)
{
    Parser parser;
    EXPECT_FALSE(parseQuietly(parser, "{7}[5:6#0][1:1]"));
    EXPECT_FALSE(parser.valid());
    parser.next();
    EXPECT_FALSE(parser.valid());
    EXPECT_TRUE(parseQuietly(parser, "0"));
    EXPECT_EQ(parser.errorText(), "");
    EXPECT_EQ(parser.obstacle(), "");
    EXPECT_EQ(parser.stack().size(), 1);
    EXPECT_EQ(parser.value(), 0);
    parser.next();
    parser.next();
    EXPECT_FALSE(parser.valid());
}

TEST(ListParser, BoundsTheDepthOfSets)
{
    EXPECT_EQ(walked(repeated("{}", 10'000) + "{5}" + repeated("+ ", 10'000)), Values({5}));
    EXPECT_EQ(walked("{5}" + repeated("+{}", 10'000)), Values({5}));
    EXPECT_EQ(walked("{0,1,2}" + repeated("-{1}", 9'999) + "+{8}"), Values({0, 2, 8}));
    EXPECT_EQ(walked("{0,1,2}" + repeated("&[1:3]", 10'000)), Values({1, 2}));
    EXPECT_EQ(printed("{}" + repeated("+{}", 10'000)),
              repeated("UNION( ", 10'000) + "LIST{} " + repeated(",LIST{} ) ", 10'000));
    for (const char* const operand : {"+{}", "-{}", "&{}", "+ "})
        EXPECT_EQ(errorOf(repeated("{}", 100'001) + repeated(operand, 100'000)),
                  "More than 10000 operators.");
}

TEST(ListParser, SurvivesAnyBytes)
{
    const auto start = std::chrono::steady_clock::now();
    const std::string alphabet = "[]{}[]{}::##,,+-&+-&0123456789.eE x\t\n\0\xff"s;
    std::mt19937 random(20240607);
    for (int run = 0; run < 100'000; ++run)
    {
        std::string text(random() % 48, ' ');
        for (char& character : text)
            character = run % 4 == 0 ? static_cast<char>(random() % 256)
                                     : alphabet[random() % alphabet.size()];
        Parser parser(2'000);
        double previous = -1.0;
        try
        {
            for (parseQuietly(parser, text); parser.valid(); parser.next())
            {
                EXPECT_GT(parser.value(), previous) << text;
                previous = parser.value();
            }
        }
        catch (const tavrin::assertion_failed&)
        {
            EXPECT_FALSE(parser.valid());
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(ListParser, SurvivesNullBytesAndLongTexts)
{
    EXPECT_EQ(walked("{1,\0002,3}"s), Values({0, 1, 3}));
    EXPECT_EQ(walked("[0:\0001]{4}"s), Values({-1}));
    EXPECT_EQ(walked(repeated("9", 1'000'000)), Values({infinity}));
    EXPECT_EQ(walked("{0." + repeated("0", 1'000'000) + "1}"), Values({0}));
    EXPECT_EQ(walked(repeated("#", 1'000'000)), Values());
    Values expected(5'000);
    std::iota(expected.begin(), expected.end(), 0.0);
    std::string text = "0";
    for (int i = 1; i < 5'000; ++i)
        text += "," + std::to_string(i);
    EXPECT_EQ(walked(text), expected);
    EXPECT_EQ(walked(repeated("{3}", 5'000)), Values({3}));
}

}
