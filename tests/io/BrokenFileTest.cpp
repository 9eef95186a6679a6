#include "ReaderSamples.hpp"

#include <support/captured.hpp>

#include <random>

namespace
{

using namespace samples;

/// Every file here must end in one line that names it.
class BrokenFile : public ReaderTest
{
protected:
    std::string complaintAbout(const std::string& name, const std::string& content)
    {
        create(name, content);
        return ReaderTest::complaintAbout(name);
    }

    static std::string legacy(const std::string& dataSet)
    {
        return "# vtk DataFile Version 3.0\ntitle\nASCII\nDATASET " + dataSet;
    }
};

TEST_F(BrokenFile, IsMissingOrNoFile)
{
    std::filesystem::create_directory(folder() / "folder.vtu");
    EXPECT_EQ(ReaderTest::complaintAbout("none.vtu"), "none.vtu: no such file");
    EXPECT_EQ(ReaderTest::complaintAbout("folder.vtu"), "folder.vtu: is a folder");
    EXPECT_EQ(complaintAbout("empty.vtu", ""), "empty.vtu: is empty");
    EXPECT_EQ(complaintAbout("a.stl", "solid"),
              "a.stl: a file with the extension .stl is not supported; supported "
              "are .vti, .vtr, .vts, .vtu, .vtp, .vtk, .vtm, .pvd, .csv and .series");
    EXPECT_EQ(complaintAbout("a.pvtu", vtkFile("PUnstructuredGrid", "")),
              "a.pvtu: a file that lists the pieces of one grid is not supported; list the pieces "
              "as blocks in a .vtm file");
}

TEST_F(BrokenFile, IsNotWhatItsExtensionSays)
{
    const std::string points = legacy("STRUCTURED_POINTS\nDIMENSIONS 2 2 2\n");
    EXPECT_EQ(
        complaintAbout("a.vtu", points),
        "a.vtu: not a VTK XML file; it looks like a legacy VTK file, whose extension is .vtk");
    EXPECT_EQ(complaintAbout("a.vtk", smallImage("")),
              "a.vtk: not a legacy VTK file; it looks like a VTK XML file");
    EXPECT_EQ(complaintAbout("b.vtu", smallImage("")),
              "b.vtu: holds ImageData, whose extension is .vti");
    EXPECT_EQ(complaintAbout("c.vtu", "\x01\x02\x03"), "c.vtu: not a VTK XML file");
    EXPECT_EQ(complaintAbout("d.vtk", "\x01\x02\x03"), "d.vtk: not a legacy VTK file");
    EXPECT_EQ(complaintAbout("e.vtu", "<html></html>"),
              "e.vtu: not a VTK XML file: its root element is \"html\", not \"VTKFile\"");
    EXPECT_EQ(complaintAbout("i.vtu", "<VTKFile type=\"PolyData\" byte_order=\"Odd\"/>"),
              "i.vtu: not a VTK XML file that can be read: Unsupported byte_order=\"Odd\"");
    EXPECT_EQ(complaintAbout("f.vtu", vtkFile("vtkMultiBlockDataSet", "")),
              "f.vtu: holds vtkMultiBlockDataSet, whose extension is .vtm");
    EXPECT_EQ(
        complaintAbout("f.vtu", vtkFile("PUnstructuredGrid", "")),
        "f.vtu: holds \"PUnstructuredGrid\", which is not supported; supported are ImageData, "
        "RectilinearGrid, StructuredGrid, UnstructuredGrid and PolyData");
    EXPECT_EQ(complaintAbout("g.vtk", legacy("TABLE\n")),
              "g.vtk: holds a data set of an unsupported kind; supported are STRUCTURED_POINTS, "
              "RECTILINEAR_GRID, "
              "STRUCTURED_GRID, UNSTRUCTURED_GRID and POLYDATA");
    EXPECT_EQ(complaintAbout("h.vtu", "<VTKFile type=\"UnstructuredGrid\">\n<Piece>"),
              "h.vtu: not a whole XML file: line 2, column 7, byte index 41: no element found");
}

TEST_F(BrokenFile, DeclaresMoreThanItHolds)
{
    const std::string extent = "WholeExtent=\"0 2000000000 0 2000000000 0 2000000000\"";
    EXPECT_EQ(complaintAbout("a.vti",
                             vtkFile("ImageData", "<ImageData " + extent +
                                                      "><Piece Extent=\"0 2000000000 0 "
                                                      "2000000000 0 2000000000\"/></ImageData>")),
              "a.vti: the extents give more points than can be handled");
    EXPECT_EQ(complaintAbout(
                  "b.vti", vtkFile("ImageData",
                                   "<ImageData><Piece Extent=\"0 999999 0 9999 0 0\"><PointData>" +
                                       dataArray("type=\"Float64\" Name=\"p\"", "1 2 3") +
                                       "</PointData></Piece></ImageData>")),
              "b.vti: array \"p\": declares 10000000000 numbers, more than the file can hold");
    EXPECT_EQ(
        complaintAbout("c.vti", vtkFile("ImageData",
                                        "<ImageData><Piece Extent=\"3 0 0 9 0 0\"/></ImageData>")),
        "c.vti: the extent 3 to 0 of axis 0 is reversed or too large");
    EXPECT_EQ(
        complaintAbout("d.vti", smallImage("<PointData>" +
                                           dataArray("type=\"Int8\" Name=\"p\"", "1 2 300 4 5 6") +
                                           "</PointData>")),
        "d.vti: array \"p\": \"300\" stands where number 3 of 6 should be");
    EXPECT_EQ(
        complaintAbout("e.vti", smallImage("<PointData>" +
                                           dataArray("type=\"Int8\" Name=\"p\"", "1 2 3 4 5") +
                                           "</PointData>")),
        "e.vti: array \"p\": the text ends after 5 of 6 numbers");
    // 48 bytes are declared, 3 are there.
    EXPECT_EQ(complaintAbout(
                  "f.vti",
                  smallImage("<PointData><DataArray type=\"Float64\" Name=\"p\" format=\"binary\">"
                             "MAAAAAAAAA==</DataArray></PointData>")),
              "f.vti: array \"p\": the data is truncated");
    EXPECT_EQ(
        complaintAbout("g.vtk", legacy("UNSTRUCTURED_GRID\nPOINTS 4000000000 float\n0 0 0\n")),
        "g.vtk: an array declares 12000000000 numbers, more than the file can hold");
    EXPECT_EQ(complaintAbout("h.vtk", legacy("UNSTRUCTURED_GRID\nPOINTS -5 float\n")),
              "h.vtk: the number of points is -5");
}

TEST_F(BrokenFile, HasArraysWithMoreThanTheyNeed)
{
    const auto image = [&](const std::string& array, const std::string& attributes = "",
                           const std::string& appended = "")
    {
        return complaintAbout("a.vti",
                              vtkFile("ImageData",
                                      "<ImageData><Piece Extent=\"0 2 0 1 0 0\"><PointData>" +
                                          array + "</PointData></Piece></ImageData>" + appended,
                                      attributes));
    };
    const std::string array = "<DataArray type=\"UInt8\" Name=\"p\" format=";
    const std::string raw = "<AppendedData encoding=\"raw\">_";
    using namespace std::string_literals;
    EXPECT_EQ(image(array + "\"ascii\">1 2 3 4 5 6 7</DataArray>"),
              "a.vti: array \"p\": needs 6 numbers and has more");
    // The number of bytes, 7, as UInt32; then the bytes.
    EXPECT_EQ(image(array + "\"binary\">BwAAAAECAwQFBgc=</DataArray>"),
              "a.vti: array \"p\": needs 6 bytes and has 7");
    // The six bytes are there, and two more follow them.
    EXPECT_EQ(image(array + "\"binary\">BgAAAAECAwQFBgcI</DataArray>"),
              "a.vti: array \"p\": needs 6 bytes and has more");
    EXPECT_EQ(image(array + "\"binary\">\nBgAAAA==\nAQIDBAUG\n</DataArray>"), "ok");
    EXPECT_EQ(
        image(array + "\"appended\" offset=\"0\"/>", "", raw + "\x07\0\0\0abcdefg</AppendedData>"s),
        "a.vti: array \"p\": needs 6 bytes and has 7");
    EXPECT_EQ(
        image(array + "\"appended\" offset=\"0\"/>", "", raw + "\x06\0\0\0abcdef</AppendedData>"s),
        "ok");
    // One block of 7 bytes, and two of 6.
    const std::string compressed = "compressor=\"vtkZLibDataCompressor\"";
    EXPECT_EQ(image(array + "\"binary\">AQAAAAcAAAAAAAAACAAAAA==AAAA</DataArray>", compressed),
              "a.vti: array \"p\": needs 6 bytes and has 7");
    EXPECT_EQ(image(array + "\"binary\">AgAAAAYAAAAAAAAACAAAAAgAAAA=AAAA</DataArray>", compressed),
              "a.vti: array \"p\": needs 6 bytes and has 12");
    EXPECT_EQ(
        complaintAbout("b.vtk", legacy("STRUCTURED_POINTS\nDIMENSIONS 2 1 1\nPOINT_DATA 2\n"
                                       "SCALARS p int\nLOOKUP_TABLE default\n1 2 3\n")),
        "b.vtk: an array has more numbers than it declares; the first of them ends at byte 135");
}

TEST_F(BrokenFile, IsReportedInAShortLine)
{
    const std::string name(3000, 'n');
    const std::string shortName = std::string(80, 'n') + "..." + std::string(40, 'n');
    EXPECT_EQ(complaintAbout("a.vti",
                             smallImage("<PointData>" +
                                        dataArray("type=\"Int8\" Name=\"" + name + "\"", "1 2 3") +
                                        "</PointData>")),
              "a.vti: array \"" + shortName + "\": the text ends after 3 of 6 numbers");
    create("b.vti",
           smallImage("<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "1 2 3 4 5 6") +
                      "</PointData>"));
    EXPECT_EQ(usageErrorOf("b.vti#" + name),
              "b.vti: no array \"" + shortName + "\"; there is \"p\"");
    // The array of points has no name.
    EXPECT_EQ(complaintAbout("c.vtu", gridFile(4, "0 0 0 1", 1, "0 1 2", "3", "5")),
              "c.vtu: the array of Points: the text ends after 4 of 12 numbers");
}

TEST_F(BrokenFile, MayBeEmptyWithAnEndlessExtent)
{
    EXPECT_EQ(
        complaintAbout(
            "a.vti",
            vtkFile("ImageData", "<ImageData WholeExtent=\"0 3 0 9223372036854775807 0 2\"><Piece "
                                 "Extent=\"0 3 3 2 0 2\"><PointData>" +
                                     dataArray("type=\"Int8\" Name=\"p\"", "") +
                                     "</PointData></Piece></ImageData>")),
        "ok");
}

TEST_F(BrokenFile, DeclaresComponentsWithoutEnd)
{
    EXPECT_EQ(complaintAbout("a.vtk", legacy("STRUCTURED_POINTS\nDIMENSIONS 2 2 2\nFIELD f 1\n"
                                             "a 1099511627776 0 bit\nMETADATA\nCOMPONENT_NAMES\n"
                                             "x\n")),
              "a.vtk: the array \"a\" has 1099511627776 components");
}

TEST_F(BrokenFile, HasBlocksThatDoNotAddUp)
{
    // Blocks, bytes of a block, bytes of the last, bytes of the first one compressed; as UInt32.
    const auto blocks = [&](const std::string& header)
    {
        return complaintAbout(
            "a.vti", vtkFile("ImageData",
                             "<ImageData><Piece Extent=\"0 2 0 1 0 0\"><PointData>"
                             "<DataArray type=\"Float64\" Name=\"p\" format=\"binary\">" +
                                 header + "AAAA</DataArray></PointData></Piece></ImageData>",
                             "compressor=\"vtkZLibDataCompressor\""));
    };
    EXPECT_EQ(blocks("AQAAAAAAAAAAAAAAAwAAAA=="),
              "a.vti: array \"p\": a compressed block of 3 bytes cannot hold 0");
    EXPECT_EQ(blocks("AQAAAACAAAAwAAAA/////w=="), "a.vti: array \"p\": the data is truncated");
    EXPECT_EQ(blocks("/////wAAAAAwAAAAAwAAAA=="), "a.vti: array \"p\": the data is truncated");
    EXPECT_EQ(blocks("AQAAAACAAAAwAAAAAwAAAA=="),
              "a.vti: array \"p\": the compressed data is damaged");
    EXPECT_EQ(blocks("AQAAAACAAAAQAAAAAwAAAA=="), "a.vti: array \"p\": needs 48 bytes and has 16");
    EXPECT_EQ(blocks("AQAAAACAAAD///8/AwAAAA=="),
              "a.vti: array \"p\": a compressed block of 3 bytes cannot hold 1073741823");
}

TEST_F(BrokenFile, HasCellsOrPointsThatMakeNoSense)
{
    const std::string points = "0 0 0  1 0 0  0 1 0  1 1 0";
    EXPECT_EQ(complaintAbout("a.vtu", gridFile(4, points, 2, "0 1 2 1 2 4", "3 6", "5 5")),
              "a.vtu: 1 cell with vertices beyond the 4 points, the first is cell 1");
    EXPECT_EQ(complaintAbout("b.vtu", gridFile(4, points, 2, "0 1 2 -1 0 1 2 3", "4 8", "7 8")),
              "b.vtu: 1 cell with vertices beyond the 4 points, the first is cell 0");
    EXPECT_EQ(
        complaintAbout("c.vtu", gridFile(4, points, 2, "0 1 2 0 1 2", "9 6", "5 5")),
        "c.vtu: 2 cells with offsets that descend or leave the connectivity, the first is cell 0");
    EXPECT_EQ(complaintAbout("d.vtu", gridFile(4, points, 1, "0 1 2", "3", "10")),
              "d.vtu: 1 cell with fewer vertices than the type has, the first is cell 0");
    EXPECT_EQ(complaintAbout("e.vtu", gridFile(4, points, 1, "0 1 2", "3", "99")),
              "e.vtu: 1 cell of a type that is not supported, the first is cell 0");
    EXPECT_EQ(complaintAbout("f.vtu", gridFile(4, points, 1, "0 1 2 3", "4", "42")),
              "f.vtu: the array \"faceoffsets\" of its Cells is missing");
    EXPECT_EQ(
        complaintAbout("g.vtu", gridFile(4, "0 nan 0 1 0 0 0 1 0 inf 1 0", 1, "0 1 2", "3", "5")),
        "g.vtu: 2 points have coordinates that are not finite");
    EXPECT_EQ(
        complaintAbout(
            "h.vtk",
            legacy("POLYDATA\nPOINTS 3 float\n0 0 0 1 0 0 0 1 0\nPOLYGONS 2 8\n3 0 1 2 9 0 1 2\n")),
        "h.vtk: cell 1 of 2 leaves the list of cells");
    EXPECT_EQ(complaintAbout(
                  "i.vtk",
                  legacy("STRUCTURED_GRID\nDIMENSIONS 2 2 2\nPOINTS 3 float\n0 0 0 1 0 0 0 1 0\n")),
              "i.vtk: has 3 points where its dimensions need 8");
    EXPECT_EQ(
        complaintAbout("j.vtk", legacy("STRUCTURED_POINTS\nDIMENSIONS 2 2 2\nPOINT_DATA 3\n")),
        "j.vtk: has values for 3 points and 8 points");
    EXPECT_EQ(complaintAbout("k.vti", smallImage("", "Direction=\"1 0 0 1 0 0 0 0 1\"")),
              "k.vti: the direction matrix is singular");
    EXPECT_EQ(complaintAbout(
                  "l.vtr",
                  vtkFile("RectilinearGrid",
                          "<RectilinearGrid><Piece Extent=\"0 2 0 0 0 0\"><Coordinates>" +
                              dataArray("type=\"Int32\"", "0 5 1") +
                              dataArray("type=\"Int32\"", "0") + dataArray("type=\"Int32\"", "0") +
                              "</Coordinates></Piece></RectilinearGrid>")),
              "l.vtr: the coordinates of axis 0 neither ascend nor descend");
}

TEST_F(BrokenFile, IsNestedWithoutEnd)
{
    std::string deep;
    for (int i = 0; i < 300000; ++i)
        deep += "<a>";
    for (int i = 0; i < 300000; ++i)
        deep += "</a>";
    EXPECT_EQ(complaintAbout("a.vtu", vtkFile("UnstructuredGrid", deep)),
              "a.vtu: the element UnstructuredGrid is missing");
    EXPECT_EQ(complaintAbout("a.pvd", vtkFile("Collection", deep)), "a.pvd: lists no files");
    EXPECT_EQ(complaintAbout("a.series", std::string(300000, '[')),
              "a.series: not a whole JSON file");
}

/// Damages a file in many ways; whatever comes of it is a file that can be read or one line.
TEST_F(BrokenFile, NeverEndsInMoreThanOneLine)
{
    const std::string marks = "<PointData>" + dataArray("type=\"Float32\" Name=\"p\"", "1 2 3 4") +
                              "</PointData><CellData>" +
                              dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "0 1") +
                              "</CellData>";
    const std::vector<std::pair<std::string, std::string>> seeds{
        {"a.vtu", gridFile(4, "0 0 0 1 0 0 0 1 0 1 1 0", 2, "0 1 2 1 2 3", "3 6", "5 6", marks)},
        {"a.vtk",
         legacy(
             "UNSTRUCTURED_GRID\nPOINTS 4 float\n0 0 0 1 0 0 0 1 0 1 1 0\nCELLS 2 9\n3 0 1 2 4 "
             "0 1 3 2\n"
             "CELL_TYPES 2\n5 7\nPOINT_DATA 4\nSCALARS p float 1\nLOOKUP_TABLE default\n1 2 3 4\n"
             "METADATA\nCOMPONENT_NAMES\nx\n\nCELL_DATA 2\nFIELD f 1\nc 1 2 int\n7 8\n")}};
    std::mt19937 random(1);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (const auto& [name, content] : seeds)
    {
        EXPECT_EQ(complaintAbout(name, content), "ok");
        for (int i = 0; i < 250; ++i)
        {
            std::string damaged = content;
            if (i % 4 == 0)
                damaged.resize(1 + below(content.size() - 1));
            for (std::size_t changes = below(4); changes-- > 0;)
                damaged[below(damaged.size())] = static_cast<char>(random());
            if (i % 3 == 0)
                damaged.erase(below(damaged.size()), below(20));
            if (damaged.empty())
                continue;
            std::string complaint;
            try
            {
                complaint = complaintAbout(name, damaged);
            }
            catch (const usage_error& error)
            {
                complaint = withoutFolder(error.what());
            }
            EXPECT_TRUE(complaint == "ok" || complaint.starts_with(name + ": ")) << complaint;
            EXPECT_EQ(complaint.find('\n'), std::string::npos) << complaint;
        }
    }
}

TEST_F(BrokenFile, LeavesNothingOnStandardError)
{
    const auto readBrokenFiles = [&]
    {
        complaintAbout("a.vtu", "<VTKFile");
        complaintAbout("b.vti",
                       vtkFile("ImageData",
                               "<ImageData><Piece Extent=\"0 1 0 0 0 0\"><PointData><DataArray "
                               "type=\"Float64\" Name=\"p\" format=\"appended\" "
                               "offset=\"0\"/></PointData></Piece></ImageData>"
                               "<AppendedData encoding=\"raw\">no underscore</AppendedData>",
                               "compressor=\"vtkZLibDataCompressor\""));
        complaintAbout("c.vtk", legacy("POLYDATA\nPOINTS 1 float\nx"));
    };
    EXPECT_EQ(standardErrorOf(readBrokenFiles), "");
}

}
