#include "CommandLine.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// Tests of what "info" tells about the values in a file.

namespace
{

using nlohmann::json;

/// Two time steps of two points, with every kind of number.
constexpr const char* table =
    R"(printf 'time,x,v_x,v_y,s_xx,s_yy,s_zz,s_xy,s_yz,s_xz,p,valid\n)"
    R"(0.1,0,3,4,1,2,3,4,5,6,nan,1\n0.1,1,inf,0,1,2,3,4,5,6,-2.5,1\n)"
    R"(1e-3,0,-6,8,1,2,3,4,5,6,1,1\n1e-3,1,100,100,9,9,9,9,9,9,9,0\n' >t.csv; )";

json informationAbout(const std::string& words, const std::string& threads = "2")
{
    const Workshop workshop;
    const Outcome outcome =
        workshop.run(table + ("tavrin --threads " + threads + " info --json ") + words);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    return json::parse(outcome.standardOutput);
}

TEST(Info, PrintsTimesAsASetExpression)
{
    const Workshop workshop;
    EXPECT_EQ(workshop.run(std::string(table) + "tavrin info t.csv --times").standardOutput,
              "{0.001,0.1}\n");
    EXPECT_EQ(workshop.run("tavrin info t.csv?time=0.1 --times").standardOutput, "{0.1}\n");
    EXPECT_EQ(workshop.run("tavrin info t.csv --times --stats").standardOutput.find("times  {"),
              workshop.run("tavrin info t.csv --stats").standardOutput.size() + 1);
}

TEST(Info, TellsRangeMeanAndCountsOfEachComponentOverAllSteps)
{
    const json info = informationAbout("t.csv --stats --times");
    EXPECT_EQ(info["formatVersion"], 1);
    EXPECT_EQ(info["times"], "{0.001,0.1}");
    EXPECT_EQ(info["timeSteps"], (std::vector<double>{0.001, 0.1}));
    ASSERT_EQ(info["statistics"].size(), 4U);
    const json v = info["statistics"][0];
    EXPECT_EQ(v["name"], "v");
    EXPECT_EQ(v["steps"], 2);
    EXPECT_EQ(v["values"], 4);
    EXPECT_EQ(v["invalid"], 1);
    EXPECT_EQ(v["components"][0], json::parse(R"({"minimum": -6.0, "maximum": 3.0, "mean": -1.5,
        "finite": 2, "notANumber": 0, "infinite": 1, "name": "x"})"));
    EXPECT_EQ(v["components"][1]["mean"], 4.0);
    EXPECT_EQ(v["norm"]["maximum"], 10.0);
    EXPECT_EQ(v["norm"]["minimum"], 5.0);
    EXPECT_EQ(v["norm"]["infinite"], 1);
    // Six components are told as such, in the order of the matrix.
    const json s = info["statistics"][1];
    ASSERT_EQ(s["components"].size(), 6U);
    EXPECT_EQ(s["components"][2]["name"], "xz");
    EXPECT_EQ(s["components"][2]["maximum"], 6.0);
    const json p = info["statistics"][2];
    EXPECT_EQ(p["components"][0], json::parse(R"({"minimum": -2.5, "maximum": 1.0, "mean": -0.75,
        "finite": 2, "notANumber": 1, "infinite": 0, "name": ""})"));
    EXPECT_EQ(p["norm"], nullptr);
    // The mask itself is an array like others.
    EXPECT_EQ(info["statistics"][3]["components"][0]["mean"], 0.75);
}

TEST(Info, TellsTheSameForEveryNumberOfThreads)
{
    const std::string flow = "flow.vtu --stats";
    const json one = informationAbout(flow, "1");
    EXPECT_GT(one["statistics"][0]["components"][0]["finite"], 1000);
    EXPECT_EQ(one, informationAbout(flow, "3"));
}

TEST(Info, TellsOnlyTheNormOfWideVectors)
{
    const Workshop workshop;
    const Outcome outcome = workshop.run(
        "{ printf x; for i in $(seq 0 241); do printf ,w_$i; done; echo; seq -s, 243; } "
        ">w.csv; tavrin info w.csv --stats | tail -3");
    EXPECT_EQ(outcome.standardOutput.substr(0, 5), "ARRAY");
    EXPECT_NE(outcome.standardOutput.find("norm"), std::string::npos);
    EXPECT_NE(outcome.standardOutput.find("w has 242 components; only its norm is shown.\n"),
              std::string::npos);
}

}
