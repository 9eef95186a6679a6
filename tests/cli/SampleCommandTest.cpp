#include "CommandLine.hpp"

#include <support/realData.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// Tests of sampling on the command line, from files to files.

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
    // The validity mask in the file does not make the choice of the array ambiguous.
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

TEST(SampleCommand, TakesAllBlocksAsOneField)
{
    const Workshop workshop;
    const auto slab = [](const std::string& x, const std::string& array)
    {
        return "<VTKFile type=\"ImageData\"><ImageData WholeExtent=\"0 1 0 1 0 0\" Origin=\"" + x +
               " 0 0\" Spacing=\"1 1 1\"><Piece Extent=\"0 1 0 1 0 0\"><CellData>"
               "<DataArray format=\"ascii\" type=\"Float64\" Name=\"" +
               array + "\">" + x + "</DataArray></CellData></Piece></ImageData></VTKFile>";
    };
    workshop.write("left.vti", slab("0", "p"));
    workshop.write("right.vti", slab("1", "p"));
    workshop.write("wall.vti", slab("2", "q"));
    workshop.write("room.vtm",
                   "<VTKFile type=\"vtkMultiBlockDataSet\"><vtkMultiBlockDataSet>"
                   "<Block index=\"0\" name=\"room\"><DataSet name=\"right\" file=\"right.vti\"/>"
                   "<DataSet name=\"left\" file=\"left.vti\"/></Block>"
                   "<DataSet index=\"1\" name=\"wall\" file=\"wall.vti\"/>"
                   "</vtkMultiBlockDataSet></VTKFile>");
    workshop.write("line.vtk", "# vtk DataFile Version 3.0\n\nASCII\nDATASET POLYDATA\nPOINTS 4 "
                               "float\n0.5 0.5 0  1 0.5 0  1.5 0.5 0  2.5 0.5 0\n");
    const Outcome outcome =
        workshop.run(sample + "Field=room.vtm#p Grid=line.vtk -o out.vtp --report report.json && "
                              "tavrin run Field/Info Field=out.vtp#p");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardError,
              "warning: room.vtm: no array \"p\" in 1 of 3 blocks; left out: \"wall\"\n"
              "hint: 1 of 4 samples are outside of the field; they are 0 and marked as not valid\n"
              "hint: 1 of 4 values are marked as outside and left out\n");
    EXPECT_EQ(samplesOf(workshop), nlohmann::json({{"total", 4}, {"outside", 1}}));

    EXPECT_EQ(workshop.run(sample + "Field=room.vtm#p Grid=left.vti -o wall.vti").standardError,
              "error: wall.vti: is an input, and would be overwritten\n");
    EXPECT_EQ(workshop.run("tavrin info room.vtm").standardOutput, R"(file    room.vtm
format  VTK XML multi-block data
blocks  3
grid    2-D
points  12
cells   3 (3 Quads)
x       0 .. 3
y       0 .. 1

BLOCK       GRID          POINTS         CELLS        FILE
room/right  uniform, 2-D  4 (2 x 2 x 1)  1 (1 Quads)  right.vti
room/left   uniform, 2-D  4 (2 x 2 x 1)  1 (1 Quads)  left.vti
wall        uniform, 2-D  4 (2 x 2 x 1)  1 (1 Quads)  wall.vti

ARRAY  ON     COMPONENTS  STORED AS  VALUES  IN BLOCKS              REFERENCE
p      cells  1           float64    Scalar  room/right, room/left  room.vtm#p
q      cells  1           float64    Scalar  wall                   room.vtm#q
)");
    const auto info =
        nlohmann::json::parse(workshop.run("tavrin info --json room.vtm").standardOutput);
    EXPECT_EQ(info["grid"], nullptr);
    EXPECT_EQ(info["blocks"][2]["name"], "wall");
    EXPECT_EQ(info["blocks"][2]["arrays"][0]["reference"], "wall.vti#q");
}

/// Only the algorithm knows the number of time steps and the grid of the result. A format that cannot
/// hold them is still refused before the sampling, which would take a minute here.
TEST(SampleCommand, RefusesAFormatBeforeItSamples)
{
    const Workshop workshop;
    const std::string start = "timeout 10 " + sample + "Field=double_gyre.pvd ";
    for (const auto& [rest, error] :
         {std::pair(
              "Grid=double_gyre/double_gyre_0000.vti 'Time=[0:10#0.001]' -o out.vti",
              "error: out.vti: a function with 10001 time steps is written as .pvd or .csv\n"),
          std::pair("Grid=flow.vtu -o out.vti",
                    "error: out.vti: an unstructured grid is written as .vtu, .pvd or .csv\n")})
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
        "hint: \"Time\" is no list of numbers: First number in range must be smaller than the second "
        "number.\n"
        "Found 0 time values.\n"
        "error: \"Field/Sample Field on Given Grid\" published nothing on \"Sampled Field\"\n");

    if (!support::realDataFolder())
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
