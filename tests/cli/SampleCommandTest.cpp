#include "CommandLine.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

// Sampling as a user does it, from files to files.

namespace
{

const std::string sample = "tavrin run 'Field/Sample Field on Given Grid' ";

nlohmann::json samplesOf(const Workshop& workshop)
{
    return nlohmann::json::parse(workshop.read("report.json")).at("samples");
}

TEST(SampleCommand, WritesASeriesThatOtherCommandsTake)
{
    const Workshop workshop;
    const Outcome outcome =
        workshop.run(sample + R"(Field=double_gyre.pvd Grid=probe.vti "Time=[0:10#0.5]-{3,4}" )"
                              "-o 'Sampled Field=sampled.pvd' --report report.json");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardError, "");
    EXPECT_EQ(samplesOf(workshop), nlohmann::json({{"total", 19 * 273}, {"outside", 0}}));
    const Outcome info = workshop.run("tavrin info sampled.pvd");
    EXPECT_NE(info.standardOutput.find("19 from 0 to 10"), std::string::npos);
    EXPECT_NE(info.standardOutput.find("vtkValidPointMask"), std::string::npos);
    // The marks of real samples do not make the array ambiguous.
    const Outcome report = workshop.run("tavrin run Field/Info Field=sampled.pvd");
    EXPECT_EQ(report.exitCode, 0) << report.standardError;
}

TEST(SampleCommand, SaysWhenNothingWasMet)
{
    const Workshop workshop;
    const Outcome outcome = workshop.run(sample + "Field=double_gyre.pvd Grid=probe.vti Time=11,12 "
                                                  "-o out.pvd --report report.json");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardError, "hint: all samples are 0, since no time lies in the range of "
                                     "the field, 0 to 10\n");
    EXPECT_EQ(samplesOf(workshop), nlohmann::json({{"total", 2 * 273}, {"outside", 2 * 273}}));
}

TEST(SampleCommand, TakesALineAlongAnAxisAndAGridWithoutPoints)
{
    const Workshop workshop;
    const std::string head = "# vtk DataFile Version 3.0\n\nASCII\nDATASET POLYDATA\nPOINTS ";
    workshop.write("line.vtk", head + "3 float\n0 0 0  0.5 0 0  1 0 0\n");
    workshop.write("none.vtk", head + "0 float\n");
    for (const auto& [grid, count] : {std::pair("line.vtk", 3), std::pair("none.vtk", 0)})
    {
        const Outcome outcome = workshop.run(sample + "Field=double_gyre.pvd Grid=" + grid +
                                             " -o out.vtp --report report.json");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
        EXPECT_EQ(samplesOf(workshop), nlohmann::json({{"total", count}, {"outside", 0}}));
    }
}

/// Only the algorithm knows how many times there are, and on which of the grids: all the same, what
/// cannot be written is refused before the sampling, which takes a minute here.
TEST(SampleCommand, RefusesAFormatBeforeItSamples)
{
    const Workshop workshop;
    const std::string start = "timeout 10 " + sample + "Field=double_gyre.pvd ";
    for (const auto& [rest, error] :
         {std::pair("Grid=double_gyre/double_gyre_0000.vti 'Time=[0:10#0.001]' -o out.vti",
                    "error: out.vti: a function with 10001 time steps is written as .pvd\n"),
          std::pair("Grid=flow.vtu -o out.vti",
                    "error: out.vti: an unstructured grid is written as .vtu or .pvd\n")})
    {
        const Outcome outcome = workshop.run(start + rest);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.standardError, error);
    }
}

TEST(SampleCommand, TellsTheUserWhatIsWrong)
{
    const Workshop workshop;
    const Outcome times =
        workshop.run(sample + "Field=double_gyre.pvd Grid=probe.vti 'Time=[3:2]' -o out.pvd");
    EXPECT_EQ(times.exitCode, 1);
    EXPECT_TRUE(times.standardOutput.ends_with(
        "ListParser encountered an error: \"First number in range must be smaller than the second "
        "number.\".\n"));
    EXPECT_EQ(
        times.standardError,
        "Found 0 time values.\n"
        "error: \"Field/Sample Field on Given Grid\" published nothing on \"Sampled Field\"\n");

    if (std::getenv("TAVRIN_TEST_DATA") == nullptr)
        return;
    const Outcome field = workshop.run(sample + "Field=$REAL/notch_stress.vtk'#Nodal Stress-0' "
                                                "Field=flow.vtu Grid=probe.vti -o out.vti");
    EXPECT_EQ(field.exitCode, 1);
    EXPECT_NE(field.standardError.find("hint: the field given is values of type Scalar on the "
                                       "Points of a 3-D grid; values of type "),
              std::string::npos)
        << field.standardError;
    EXPECT_TRUE(field.standardError.ends_with("error: unsupported field type occurred.\n"));
}

}
