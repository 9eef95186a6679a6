#include "ReaderSamples.hpp"

#include <vtkCellType.h>

namespace
{

using namespace samples;

class CellConversion : public ReaderTest
{
protected:
    /// The cells that one cell of a VTK type becomes, and its values "7".
    std::vector<std::string> convert(int vtkType, const std::string& vertices,
                                     const std::string& points, std::size_t numPoints)
    {
        const auto count = std::ranges::count(vertices, ' ') + 1;
        create("cell.vtu",
               gridFile(numPoints, points, 1, vertices, std::to_string(count),
                        std::to_string(vtkType),
                        "<CellData>" + dataArray("type=\"Int8\" Name=\"c\"", "7") + "</CellData>"));
        const auto function = load("cell.vtu");
        for (const Scalar& value : valuesOf<Scalar>(*function))
            EXPECT_EQ(value, Scalar{7.0});
        return cellsOf(*function->domain());
    }

    using Cells = std::vector<std::string>;
    static inline const std::string cube = "0 0 0 1 0 0 0 1 0 1 1 0 0 0 1 1 0 1 0 1 1 1 1 1 ";
};

TEST_F(CellConversion, RenumbersPixelsAndVoxels)
{
    EXPECT_EQ(convert(VTK_PIXEL, "0 1 2 3", cube, 8), Cells{"Quads: 0 1 3 2"});
    EXPECT_EQ(convert(VTK_VOXEL, "0 1 2 3 4 5 6 7", cube, 8), Cells{"Hexahedra: 0 1 3 2 4 5 7 6"});
}

TEST_F(CellConversion, TakesListsOfCellsApart)
{
    EXPECT_EQ(convert(VTK_POLY_VERTEX, "3 1", cube, 8), (Cells{"Points: 3", "Points: 1"}));
    EXPECT_EQ(convert(VTK_POLY_LINE, "3 1 0", cube, 8), (Cells{"Lines: 3 1", "Lines: 1 0"}));
    EXPECT_EQ(convert(VTK_TRIANGLE_STRIP, "0 1 2 3 4", cube, 8),
              (Cells{"Triangles: 0 1 2", "Triangles: 2 1 3", "Triangles: 2 3 4"}));
    EXPECT_EQ(convert(VTK_POLYGON, "0 1 3 2", cube, 8), Cells{"Quads: 0 1 3 2"});
}

TEST_F(CellConversion, CutsPolygonsIntoTrianglesThatDoNotOverlap)
{
    // A convex one becomes a fan from its lowest corner.
    EXPECT_EQ(convert(VTK_POLYGON, "4 1 0 2 3", "0 0 0 2 0 0 3 1 0 2 2 0 4 4 0", 5).size(), 3U);
    EXPECT_EQ(convert(VTK_POLYGON, "1 2 3 4 0", "0 0 1 2 0 1 3 1 1 2 2 1 0 2 1", 5),
              (Cells{"Triangles: 0 1 2", "Triangles: 0 2 3", "Triangles: 0 3 4"}));
    // An arrow head, standing upright; a fan from corner 0 would leave it.
    const auto arrow = convert(VTK_POLYGON, "0 1 2 3 4", "0 0 0 3 0 0.5 4 0 2 0 0 4 1 0 2", 5);
    const std::array<std::array<double, 2>, 5> corners{
        {{0.0, 0.0}, {3.0, 0.5}, {4.0, 2.0}, {0.0, 4.0}, {1.0, 2.0}}};
    const auto areaOf = [&](std::size_t a, std::size_t b, std::size_t c)
    {
        return 0.5 * ((corners[b][0] - corners[a][0]) * (corners[c][1] - corners[a][1]) -
                      (corners[b][1] - corners[a][1]) * (corners[c][0] - corners[a][0]));
    };
    double sum = 0.0;
    double sumOfSizes = 0.0;
    for (const std::string& text : arrow)
    {
        const auto corner = [&](std::size_t k)
        { return static_cast<std::size_t>(text[11 + 2 * k] - '0'); };
        sum += areaOf(corner(0), corner(1), corner(2));
        sumOfSizes += std::abs(areaOf(corner(0), corner(1), corner(2)));
    }
    EXPECT_EQ(arrow.size(), 3U);
    EXPECT_DOUBLE_EQ(sum, sumOfSizes) << "all triangles turn the same way";
    EXPECT_DOUBLE_EQ(sum, areaOf(0, 1, 2) + areaOf(0, 2, 3) + areaOf(0, 3, 4));
}

TEST_F(CellConversion, FillsPolyhedraAndPrismsWithSimplerCells)
{
    EXPECT_EQ(convert(VTK_HEXAGONAL_PRISM, "0 1 2 3 4 5 6 7 8 9 10 11", cube + cube, 16).size(),
              2U);
    EXPECT_EQ(convert(VTK_PENTAGONAL_PRISM, "0 1 2 3 4 5 6 7 8 9", cube + cube, 16),
              (Cells{"Hexahedra: 0 1 2 3 5 6 7 8", "Prisms: 0 3 4 5 8 9"}));

    const std::string faces = "6 4 0 2 3 1 4 4 5 7 6 4 0 1 5 4 4 1 3 7 5 4 3 2 6 7 4 2 0 4 6";
    std::string file =
        gridFile(8, cube, 2, "0 1 2 4 0 1 2 3 4 5 6 7", "4 12", "10 42",
                 "<CellData>" + dataArray("type=\"Int8\" Name=\"c\"", "7 8") + "</CellData>");
    file.insert(file.find("</Cells>"),
                dataArray("type=\"Int64\" Name=\"faces\"", faces) +
                    dataArray("type=\"Int64\" Name=\"faceoffsets\"", "-1 31"));
    create("cube.vtu", file);
    create("cube.vtk",
           "# vtk DataFile Version 4.2\n\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS 8 float\n" +
               cube + "\nCELLS 2 37\n4 0 1 2 4\n31 " + faces +
               "\nCELL_TYPES 2\n10 42\nCELL_DATA 2\n"
               "SCALARS c int\nLOOKUP_TABLE default\n7 8\n");
    for (const std::string name : {"cube.vtu", "cube.vtk"})
    {
        const auto function = load(name);
        const auto& grid = dynamic_cast<const UnstructuredGrid<3>&>(*function->domain());
        EXPECT_EQ(grid.numPoints(), 8U);
        double volume = 0.0;
        for (std::size_t i = 1; i < grid.numCells(); ++i)
        {
            const Cell cell = grid.cell(i);
            const auto edge = [&](std::size_t k)
            { return grid.point(cell.pointIndex(k)) - grid.point(cell.pointIndex(0)); };
            const Vector3 a = edge(1), b = edge(2), c = edge(3);
            const double sixfold = dot(Vector3(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                                               a[0] * b[1] - a[1] * b[0]),
                                       c);
            EXPECT_GT(sixfold, 0.0);
            volume += sixfold / 6.0;
        }
        EXPECT_DOUBLE_EQ(volume, 1.0);
        EXPECT_EQ(valuesOf<Scalar>(*function).front(), Scalar{7.0});
        EXPECT_EQ(valuesOf<Scalar>(*function).back(), Scalar{8.0});
    }
}

TEST_F(CellConversion, WarnsOfWhatItLeavesOut)
{
    create("a.vtu", gridFile(8, cube, 3, "0 1 2 3 4 5 0 1 2 3 4 0 1 2 3", "6 11 15", "69 10 9"));
    EXPECT_EQ(cellsOf(*loader().loadGrid(reference("a.vtu"))),
              (Cells{"Triangles: 0 1 2", "Tetrahedra: 0 1 2 3", "Quads: 0 1 2 3"}));
    loader().loadGrid(reference("a.vtu"));
    EXPECT_EQ(
        warnings(),
        (Cells{
            "a.vtu: 1 cell lists more points than its type has; only the first are used",
            "a.vtu: 1 cell of type Lagrange triangle is read as linear, with the corners alone"}))
        << "each once";
}

TEST_F(CellConversion, WarnsOfConcavePolyhedra)
{
    // An L of height 1; what is behind the inner edge cannot be seen from corner 0.
    const std::string corners = "2 0 0 2 1 0 1 1 0 1 2 0 0 2 0 0 0 0 "
                                "2 0 1 2 1 1 1 1 1 1 2 1 0 2 1 0 0 1";
    std::string file = gridFile(12, corners, 1, "0 1 2 3 4 5 6 7 8 9 10 11", "12", "42");
    file.insert(file.find("</Cells>"),
                dataArray("type=\"Int64\" Name=\"faces\"",
                          "8 6 0 1 2 3 4 5 6 6 7 8 9 10 11 4 0 1 7 6 4 1 2 8 7 4 2 3 9 8 "
                          "4 3 4 10 9 4 4 5 11 10 4 5 0 6 11") +
                    dataArray("type=\"Int64\" Name=\"faceoffsets\"", "45"));
    create("l.vtu", file);
    loader().loadGrid(reference("l.vtu"));
    EXPECT_EQ(warnings(), Cells{"l.vtu: 1 cell is a concave polyhedron; the parts that "
                                "are not visible from the corner with the lowest index are filled "
                                "wrongly"});
}

TEST_F(CellConversion, RefusesOffsetsThatOverflow)
{
    create("a.vtu", gridFile(4, "0 0 0 1 0 0 0 1 0 1 1 1", 2, "0 1 2 3", "-2147483648 4", "10 10"));
    EXPECT_EQ(complaintAbout("a.vtu"), "a.vtu: 2 cells with offsets that descend or leave the "
                                       "connectivity, the first is cell 0");
}

TEST_F(CellConversion, KeepsTheMemoryAndTheNumbersOfCellsThatFit)
{
    EXPECT_EQ(convert(VTK_EMPTY_CELL, "0 1 2 3", cube, 8), Cells{"INVALID:"});
    create("a.vtu", gridFile(8, cube, 2, "0 1 2 3 0 1 2 3 4 5 6 7", "4 12", "10 12"));
    const auto grid = loader().loadGrid(reference("a.vtu"));
    const auto& table = dynamic_cast<const UnstructuredGrid<3>&>(*grid).cells();
    EXPECT_TRUE(std::holds_alternative<std::span<const std::int32_t>>(table.offsets.storage()));
    EXPECT_TRUE(
        std::holds_alternative<std::span<const std::int64_t>>(table.connectivity.storage()));
}

TEST_F(CellConversion, CutsASpiralExactly)
{
    // Many reflex corners, and an ear at each end alone.
    constexpr std::size_t half = 200;
    std::vector<std::array<double, 2>> corners(2 * half);
    for (std::size_t i = 0; i < half; ++i)
    {
        const double angle = 0.1 * static_cast<double>(i);
        const double radius = 1.0 + 0.3 * angle;
        for (const double width : {0.0, 0.5})
            corners[width == 0.0 ? i : 2 * half - 1 - i] = {(radius - width) * std::cos(angle),
                                                            (radius - width) * std::sin(angle)};
    }
    std::ostringstream points;
    std::string vertices;
    points.precision(17);
    double area = 0.0;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const auto& [x, y] = corners[i];
        const auto& [nextX, nextY] = corners[(i + 1) % corners.size()];
        area += (x * nextY - y * nextX) / 2.0;
        points << x << ' ' << y << " 0 ";
        vertices += (i == 0 ? "" : " ") + std::to_string(i);
    }
    const Cells triangles = convert(VTK_POLYGON, vertices, points.str(), corners.size());
    EXPECT_EQ(triangles.size(), corners.size() - 2);
    double sum = 0.0;
    for (const std::string& triangle : triangles)
    {
        std::istringstream text(triangle.substr(triangle.find(':') + 1));
        std::size_t a = 0;
        std::size_t b = 0;
        std::size_t c = 0;
        text >> a >> b >> c;
        const auto& [ax, ay] = corners[a];
        sum += std::abs((corners[b][0] - ax) * (corners[c][1] - ay) -
                        (corners[b][1] - ay) * (corners[c][0] - ax)) /
               2.0;
    }
    EXPECT_NEAR(sum, std::abs(area), 1e-4 * area);
}

TEST_F(CellConversion, TellsTheIndicesInTheFile)
{
    // Two squares in a row, the first one a ghost, and a polygon that becomes triangles.
    const std::string points = "0 0 0 1 0 0 2 0 0 0 1 0 1 1 0 2 1 0 3 0 0";
    const std::string file =
        gridFile(7, points, 3, "0 1 4 3 1 2 5 4 1 6 5 2 4", "4 8 13", "9 9 7",
                 "<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "0 1 2 3 4 5 6") +
                     "</PointData><CellData>" + dataArray("type=\"Int8\" Name=\"c\"", "0 1 2") +
                     dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "1 0 0") + "</CellData>");
    create("a.vtu", file);
    create("s.pvd", vtkFile("Collection", "<Collection><DataSet timestep=\"0\" file=\"a.vtu\"/>"
                                          "<DataSet timestep=\"1\" file=\"a.vtu\"/></Collection>"));
    for (const std::string reference : {"a.vtu#p", "a.vtu#c", "s.pvd#p", "s.pvd#c"})
    {
        const auto function = load(reference);
        const auto values = valuesOf<Scalar>(*function);
        ASSERT_LT(function->valuesPerStep(), 6U);
        for (std::size_t i = 0; i < function->valuesPerStep(); ++i)
            EXPECT_EQ(values[i], Scalar(static_cast<double>(function->indexInFile(i))));
    }
}

TEST_F(CellConversion, KeepsTheCellsAtDuplicatePoints)
{
    // A row of two squares: the last two points belong to another piece.
    const std::string points = "0 0 0 1 0 0 2 0 0 0 1 0 1 1 0 2 1 0";
    const std::string marks = dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "0 0 1 0 0 1");
    const std::string cells = "0 1 4 3 1 2 5 4";
    create("a.vtu",
           gridFile(6, points, 2, cells, "4 8", "9 9", "<PointData>" + marks + "</PointData>"));
    EXPECT_EQ(cellsOf(*loader().loadGrid(reference("a.vtu"))),
              (Cells{"Quads: 0 1 4 3", "Quads: 1 2 5 4"}));
    // Without the cell that needs them they go.
    create("b.vtu",
           gridFile(6, points, 2, cells, "4 8", "9 9",
                    "<PointData>" + marks + "</PointData><CellData>" +
                        dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "0 1") + "</CellData>"));
    const auto grid = loader().loadGrid(reference("b.vtu"));
    EXPECT_EQ(cellsOf(*grid), Cells{"Quads: 0 1 3 2"});
    EXPECT_EQ(dynamic_cast<const PointSetBase&>(*grid).numPoints(), 4U);
    // A structured grid without a loss stays one.
    create("c.vti", smallImage("<PointData>" + marks + "</PointData>"));
    EXPECT_NE(dynamic_cast<const UniformGrid<2>*>(loader().loadGrid(reference("c.vti")).get()),
              nullptr);
}

TEST_F(CellConversion, LeavesOutGhosts)
{
    // 3 x 2 points, 2 cells; the second cell is blanked, and with it the points 2 and 5.
    const std::string cellMarks = dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "0 32");
    const std::string values =
        "<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "0 1 2 3 4 5") + "</PointData>";
    create("cells.vti", smallImage(values + "<CellData>" + cellMarks +
                                   dataArray("type=\"Int8\" Name=\"c\"", "7 8") + "</CellData>"));
    const auto onPoints = load("cells.vti#p");
    EXPECT_EQ(cellsOf(*onPoints->domain()), Cells{"Quads: 0 1 3 2"});
    EXPECT_EQ(valuesOf<Scalar>(*onPoints), (std::vector<Scalar>{{0.0}, {1.0}, {3.0}, {4.0}}));
    EXPECT_EQ(loadValues<Scalar>("cells.vti#c"), std::vector<Scalar>{{7.0}});
    const FileInfo info = loader().inspect(reference("cells.vti"));
    EXPECT_EQ(info.arrays.size(), 2U) << "the marks are no field";
    EXPECT_EQ(info.points, 4U);
    EXPECT_EQ(info.cells, 1U);

    // A hidden point takes its cells along; a cell that is merely refined stays.
    create("points.vti",
           smallImage(
               "<PointData>" + dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "2 0 0 0 0 0") +
               dataArray("type=\"Int8\" Name=\"p\"", "0 1 2 3 4 5") + "</PointData><CellData>" +
               dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "0 8") + "</CellData>"));
    EXPECT_EQ(loadValues<Scalar>("points.vti#p"),
              (std::vector<Scalar>{{1.0}, {2.0}, {4.0}, {5.0}}));

    // Parts of one cell of the file share its mark.
    create("strip.vtu",
           gridFile(4, "0 0 0 1 0 0 0 1 0 1 1 0", 2, "0 1 2 3 0 1 2", "4 7", "6 5",
                    "<CellData>" + dataArray("type=\"UInt8\" Name=\"vtkGhostType\"", "1 0") +
                        dataArray("type=\"Int8\" Name=\"c\"", "7 8") + "</CellData>"));
    EXPECT_EQ(loadValues<Scalar>("strip.vtu#c"), std::vector<Scalar>{{8.0}});
}

}
