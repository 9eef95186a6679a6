#include "CommandLine.hpp"

#include <support/abortFlags.hpp>
#include <support/realData.hpp>

#include <tavrin/function/visit.hpp>
#include <tavrin/io/Loader.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

// Tests of what commands print and write when they succeed.

namespace
{

using nlohmann::json;

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// Runs a command that must succeed and print nothing on standard error. Returns its output.
std::string answerOf(const Workshop& workshop, const std::string& command)
{
    const Outcome outcome = workshop.run(command);
    EXPECT_EQ(outcome.exitCode, 0) << command;
    EXPECT_EQ(outcome.standardError, "") << command;
    return outcome.standardOutput;
}

json optionNamed(const json& description, const std::string& name)
{
    for (const json& option : description["options"])
        if (option["name"] == name)
            return option;
    return nullptr;
}

TEST(List, IsSortedAndAligned)
{
    const Workshop workshop;
    const auto lines = linesOf(answerOf(workshop, R"(tavrin --plugin "$PLUGIN" list)"));
    EXPECT_TRUE(std::ranges::is_sorted(lines));
    const auto columnOf = [&](const std::string& name, const std::string& description)
    {
        const auto line = std::ranges::find_if(lines, [&](const std::string& text)
                                               { return text.starts_with(name + ' '); });
        return line == lines.end() ? std::string::npos : line->find(description);
    };
    EXPECT_NE(columnOf("Trial/Wait", "Waits"), std::string::npos);
    EXPECT_EQ(columnOf("Trial/Wait", "Waits"), columnOf("Trial/Throw", "Throws"));

    const json list = json::parse(answerOf(workshop, R"(tavrin --plugin "$PLUGIN" list --json)"))
                          .at("algorithms");
    EXPECT_EQ(list.size(), lines.size());
    EXPECT_EQ(list.back(), json({{"name", "Trial/Wait"}, {"description", "Waits"}}));
}

TEST(Describe, FollowsTheValues)
{
    const Workshop workshop;
    const std::string describe = R"(tavrin --plugin "$PLUGIN" describe Trial/Everything )";
    const json plain = json::parse(answerOf(workshop, describe + "--json"));
    EXPECT_EQ(plain["options"].size(), 10U);
    EXPECT_EQ(optionNamed(plain, "Text")["visible"], false);
    EXPECT_EQ(optionNamed(plain, "Text")["afterSeparator"], true);
    EXPECT_EQ(optionNamed(plain, "Number (real)")["group"], "Values");
    EXPECT_EQ(optionNamed(plain, "Field")["required"], true);
    EXPECT_EQ(optionNamed(plain, "Color")["default"], "#ff0000ff");

    const json changed = json::parse(
        answerOf(workshop,
                 describe + R"(--json Flag=yes Field=flow.vtu "Number (real)=inf" Choice:=three)"));
    EXPECT_EQ(optionNamed(changed, "Text")["visible"], true);
    EXPECT_EQ(optionNamed(changed, "Field")["connected"], true);
    EXPECT_EQ(optionNamed(changed, "Number (real)")["value"], "inf");
    EXPECT_EQ(optionNamed(changed, "Choice")["value"], "three");
}

TEST(Describe, ShowsASheet)
{
    const Workshop workshop;
    const std::string sheet = answerOf(
        workshop, R"(tavrin --plugin "$PLUGIN" describe Trial/Everything Number=7 Grid=probe.vti)");
    EXPECT_EQ(sheet, R"(Trial/Everything
Takes everything

Options:
  Note           label
                          All kinds
                            of option
  Field          data     a field (required)
                          takes FILE#ARRAY
                          accepts: function
  Grid           data     a grid
                          takes FILE; connected
                          accepts: grid or point set
  Fields         bundle   several fields
                          takes FILE#ARRAY, several times
                          accepts: function
  [Values]
  Flag           boolean  a flag
                          default: false
  Number         integer  a whole number
                          default: 3; now: 7
  Number (real)  number   a number
                          default: 0.5

  Text           text     a text (hidden)
                          default: some text
  Color          color    a color
                          default: #ff0000ff
  Choice         choice   a choice
                          default: one
                          choices: one
                                   two

Example:
  tavrin run Trial/Everything Field=FILE#ARRAY Grid=FILE Fields=FILE#ARRAY Choice=one
)");
}

TEST(Info, TellsWhatAFileHolds)
{
    const Workshop workshop;
    EXPECT_EQ(answerOf(workshop, "tavrin info flow.vtu"), R"(file    flow.vtu
format  VTK XML unstructured grid
grid    unstructured, 3-D
points  2541
cells   12000 (12000 Tetrahedra)
x       -2 .. 2
y       -1.6 .. 1.6
z       -1.6 .. 1.6

ARRAY     ON      COMPONENTS  STORED AS  VALUES      REFERENCE
velocity  points  3           float64    3-D Vector  flow.vtu#velocity
)");
    const json series = json::parse(answerOf(workshop, "tavrin info double_gyre.pvd --json"));
    EXPECT_EQ(series["size"], json({101, 51, 1}));
    EXPECT_EQ(series["bounds"], json::parse("[[0.0, 2.0], [0.0, 1.0]]"));
    EXPECT_EQ(series["cellTypes"], json({{"Quads", 5000}}));
    EXPECT_EQ(series["timeSteps"].size(), 21U);
    EXPECT_EQ(series["arrays"][0]["reference"], "double_gyre.pvd#velocity");
    EXPECT_EQ(json::parse(answerOf(workshop, "tavrin info flow.vtu --json"))["size"], nullptr);
}

TEST(Info, SaysThatThereAreNoPoints)
{
    const Workshop workshop;
    workshop.write("none.vtk", "# vtk DataFile Version 3.0\n\nASCII\nDATASET POLYDATA\n"
                               "POINTS 0 float\n");
    EXPECT_EQ(answerOf(workshop, "tavrin info none.vtk"), R"(file    none.vtk
format  legacy VTK polygonal data
grid    no points
points  0
cells   0

No arrays.
)");
    EXPECT_EQ(json::parse(answerOf(workshop, "tavrin info none.vtk --json"))["bounds"],
              json::array());
}

TEST(Info, IsValidJsonForAnyFileName)
{
    const Workshop workshop;
    const json info =
        json::parse(answerOf(workshop, "ln -s flow.vtu \"$(printf 'a\\377\"b')c.vtu\" && "
                                       "tavrin info --json \"$(printf 'a\\377\"b')c.vtu\""));
    EXPECT_EQ(info["file"], "a\xef\xbf\xbd\"bc.vtu");
}

TEST(Run, SetsOptionsAndPrintsTheReport)
{
    const Workshop workshop;
    const std::string output = answerOf(
        workshop,
        R"(tavrin --plugin "$PLUGIN" run Trial/Everything Fields=abc_flow.vti Field=flow.vtu)"
        R"( Number=-4 "Number (real)=2.5" "Text=a=b" Fields=quadratic.vtu "Choice:= x")"
        R"( --report r.json)");
    EXPECT_EQ(output, "velocity + velocity + displacement; -4 2.5 a=b  x\nprinted\n");
    const json report = json::parse(workshop.read("r.json"));
    EXPECT_EQ(report["formatVersion"], 1);
    EXPECT_EQ(report["algorithm"], "Trial/Everything");
    EXPECT_EQ(report["options"], json({{"Field", "flow.vtu"},
                                       {"Grid", nullptr},
                                       {"Fields", {"abc_flow.vti", "quadratic.vtu"}},
                                       {"Flag", "false"},
                                       {"Number", "-4"},
                                       {"Number (real)", "2.5"},
                                       {"Text", "a=b"},
                                       {"Color", "#ff0000ff"},
                                       {"Choice", " x"}}));
    EXPECT_EQ(report["infoLog"],
              json::array({"velocity + velocity + displacement; -4 2.5 a=b  x"}));
    EXPECT_EQ(report["debugLog"], json::array());
    EXPECT_EQ(report["outputs"], json::array());
}

TEST(Run, ReportsResults)
{
    const Workshop workshop;
    const Outcome outcome =
        workshop.run(R"(tavrin --plugin "$PLUGIN" run Trial/Report --report -)");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardError, "done\nhint: look at it\n");
    const json report = json::parse(outcome.standardOutput);
    EXPECT_EQ(report["results"], json({{"count", 3},
                                       {"third", 1.0 / 3.0},
                                       {"box", {{"lower", {0.0, 1.0}}, {"name", "b"}}},
                                       {"samples", {{"total", 5}, {"outside", 2}}}}));
    EXPECT_EQ(report["samples"], json({{"total", 5}, {"outside", 2}}));
    EXPECT_EQ(report["hints"], json::array({"look at it"}));
    EXPECT_EQ(report["suggestions"], json({{"Scale", "0.25"}}));
}

TEST(Run, ReportsWhatItCost)
{
    const Workshop workshop;
    answerOf(workshop,
             R"(tavrin --plugin "$PLUGIN" run Trial/Wait Seconds=0.3 Input=double_gyre.pvd)"
             R"( -o gyre.pvd --report r.json)");
    const json report = json::parse(workshop.read("r.json"));
    EXPECT_GE(report["seconds"]["execute"], 0.3);
    EXPECT_GT(report["seconds"]["read"], 0.0);
    EXPECT_GT(report["seconds"]["write"], 0.0);
    EXPECT_GT(report["peakMemoryBytes"], 1000000);
    EXPECT_EQ(
        report["outputs"],
        json::array(
            {{{"port", "Field"}, {"file", "gyre.pvd"}, {"values", 21 * 5151}, {"timeSteps", 21}}}));
}

/// Sends the interrupt at different times, so that it also arrives while files are read or written.
TEST(Run, LeavesAllOrNothingWhenInterrupted)
{
    for (int milliseconds = 5; milliseconds <= 200; milliseconds += 13)
    {
        const Workshop workshop;
        workshop.write("series.pvd", "an earlier result");
        const Outcome outcome = workshop.run(
            "tavrin run 'Field/Tensor Field Operator' 'Field A=double_gyre.pvd' -o series.pvd & "
            "sleep 0." +
            std::string(milliseconds < 100 ? (milliseconds < 10 ? "00" : "0") : "") +
            std::to_string(milliseconds) + "; kill -TERM $!; wait $!");
        const bool isEarlier = workshop.read("series.pvd") == "an earlier result";
        EXPECT_EQ(workshop.temporaryFiles(), "");
        EXPECT_EQ(isEarlier, outcome.exitCode != 0);
        // A signal kills the program if it arrives before the program has set its handler.
        const bool isKnown =
            outcome.exitCode == 0 || outcome.exitCode == 130 || outcome.exitCode == 143;
        EXPECT_TRUE(isKnown) << outcome.exitCode;
        if (outcome.exitCode == 130)
        {
            EXPECT_EQ(outcome.standardError, "interrupted\n");
        }
    }
}

TEST(Help, ExamplesWork)
{
    const Workshop workshop;
    int examples = 0;
    for (const char* const command :
         {"list", "describe", "info", "run", "pipeline", "schema", "examples", "completion", "man"})
        for (const std::string& line :
             linesOf(answerOf(workshop, "tavrin " + std::string(command) + " --help")))
            if (line.starts_with("  tavrin "))
            {
                answerOf(workshop, line.ends_with("examples .")
                                       ? "mkdir fresh && cd fresh && " + line
                                       : line);
                ++examples;
            }
    EXPECT_GE(examples, 7);
}

TEST(Help, ComesInManyWays)
{
    const Workshop workshop;
    const std::string help = answerOf(workshop, "tavrin");
    EXPECT_EQ(answerOf(workshop, "tavrin --help"), help);
    EXPECT_EQ(answerOf(workshop, "tavrin help"), help);
    EXPECT_EQ(answerOf(workshop, "tavrin help run"), answerOf(workshop, "tavrin run -h"));
    EXPECT_EQ(answerOf(workshop, "tavrin run 'Field/Tensor Field Operator' --help"),
              answerOf(workshop, "tavrin describe 'Field/Tensor Field Operator'"));
    for (const std::string& line : linesOf(help))
        EXPECT_LE(line.size(), 130U) << line;
}

TEST(Man, IsCleanRoff)
{
    const Workshop workshop;
    if (workshop.run("groff --version").exitCode != 0)
        GTEST_SKIP() << "groff is not installed";
    const std::string page = answerOf(
        workshop, R"(tavrin --plugin "$PLUGIN" man | groff -ww -man -Tutf8 -P-cbou -rLL=100n)");
    EXPECT_NE(page.find("Trial/Everything"), std::string::npos);
    EXPECT_NE(page.find("FILE#ARRAY?key=value"), std::string::npos);
}

struct Range
{
    double low = INFINITY;
    double high = -INFINITY;
};

/// The smallest and the largest of the finite values of a scalar field in a file.
Range rangeOf(const std::filesystem::path& file)
{
    tavrin::io::Loader loader([](const std::string&) {}, support::neverAbort);
    const auto function = loader.loadFunction(tavrin::io::DataReference::parse(file.string()));
    Range range;
    tavrin::visitFunction<tavrin::TypeList<tavrin::Scalar>>(
        *function,
        [&](const auto& field)
        {
            const auto values = field.values();
            for (std::size_t i = 0; i < values->size(); ++i)
            {
                const double value = (*values)[i][0];
                if (!std::isfinite(value))
                    continue;
                range.low = std::min(range.low, value);
                range.high = std::max(range.high, value);
            }
        });
    return range;
}

/// Compares the norms of one array of each real data file with the known range.
TEST(RealData, NormsAreRight)
{
    if (!support::realDataFolder())
        GTEST_SKIP() << "TAVRIN_TEST_DATA is not set";
    const Workshop workshop;
    const json facts = json::parse(workshop.run("cat \"$REAL/facts.json\"").standardOutput);
    int files = 0;
    for (const auto& [file, fact] : facts.items())
    {
        const auto isNormed = [](const json& array) {
            return array["components"] == 2 || array["components"] == 3 || array["components"] == 9;
        };
        const std::string on =
            std::ranges::any_of(fact["point_data"], isNormed) ? "points" : "cells";
        const json& arrays = fact[on == "points" ? "point_data" : "cell_data"];
        const auto array = std::ranges::find_if(arrays, isNormed);
        if (array == arrays.end())
            continue;
        const std::string name = std::ranges::find_if(arrays.items(), [&](const auto& item)
                                                      { return isNormed(item.value()); })
                                     .key();
        SCOPED_TRACE(file + "#" + name);
        answerOf(workshop, "tavrin run 'Field/Tensor Field Operator' \"Field A=$REAL/" + file +
                               "#" + name + "?on=" + on + "\" -o norm.vtu");
        const Range range = rangeOf(workshop.folder() / "norm.vtu");
        const double high = (*array)["norm_max"];
        EXPECT_NEAR(range.low, (*array)["norm_min"], 1e-8 * high);
        EXPECT_NEAR(range.high, high, 1e-8 * high);
        ++files;
    }
    EXPECT_GE(files, 20);
}

}
