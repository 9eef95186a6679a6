#include "ReaderSamples.hpp"

#include <vtkCellData.h>
#include <vtkDataSetAttributes.h>
#include <vtkDoubleArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkStructuredGrid.h>
#include <vtkStructuredGridWriter.h>
#include <vtkUnstructuredGrid.h>
#include <vtkUnstructuredGridWriter.h>
#include <vtkXMLStructuredGridWriter.h>
#include <vtkXMLUnstructuredGridWriter.h>

namespace
{

using namespace samples;

class Reader : public ReaderTest
{};

TEST(DataReference, TakesTheLongestExistingFileThenTheArrayThenTheKeys)
{
    const DataReference plain =
        DataReference::parse("a.vtu#U?on=cells&shape=2x2&dimension=3&time=1e3");
    EXPECT_EQ(plain.file, "a.vtu");
    EXPECT_EQ(plain.array, "U");
    EXPECT_EQ(plain.on, Association::Cells);
    EXPECT_EQ(plain.shape, (std::vector<std::size_t>{2, 2}));
    EXPECT_EQ(plain.dimension, 3U);
    EXPECT_EQ(plain.time, 1000.0);
    EXPECT_EQ(DataReference::parse("a.vtu?shape=scalar").shape, std::vector<std::size_t>{});
    EXPECT_FALSE(DataReference::parse("a.vtu").array);
    // What follows the last question mark are keys.
    EXPECT_EQ(DataReference::parse("a.vtu#what? [m/s]?").array, "what? [m/s]");
}

TEST_F(Reader, FindsFilesWhoseNamesHaveHashesAndQuestionMarks)
{
    create("run #3?.vti", smallImage(""));
    EXPECT_EQ(reference("run #3?.vti#p").file, folder() / "run #3?.vti");
    EXPECT_EQ(reference("run #3?.vti#p").array, "p");
}

TEST_F(Reader, NamesWhatAKeyOfAReferenceTakes)
{
    const auto complaintAboutKey = [](const std::string& text)
    { return errorOf<usage_error>([&] { DataReference::parse(text); }); };
    EXPECT_EQ(complaintAboutKey("a.vtu?tme=1"),
              "unknown key \"tme\" in a data reference; did you mean \"time\"?");
    EXPECT_EQ(complaintAboutKey("a.vtu?on=faces"), "?on=faces: on is points or cells");
    EXPECT_EQ(complaintAboutKey("a.vtu?dimension=4"), "?dimension=4: dimension is 1, 2 or 3");
    EXPECT_EQ(complaintAboutKey("a.vtu?time=soon"), "?time=soon: time is a number");
    EXPECT_EQ(complaintAboutKey("a.vtu?shape=5"),
              "?shape=5: shape is one of scalar, 1, 2, 3, 4, 1x1, 2x2, "
              "3x3, 4x4, 242, 375");
    EXPECT_EQ(complaintAboutKey("a.vtu?on=point"),
              "?on=point: on is points or cells; did you mean \"points\"?");
    EXPECT_EQ(
        complaintAboutKey("a.vtu?order=voight"),
        "?order=voight: order is voigt, which is xx,yy,zz,yz,xz,xy, or these names in another "
        "order, such as xx,yy,zz,xy,yz,xz; did you mean \"voigt\"?");
    for (const std::string order : {"xx,yy,zz", "xx,yy,zz,xy,yz,zy", "xx,yy,zz,xy,yz,xz,"})
        EXPECT_EQ(complaintAboutKey("a.vtu?order=" + order).substr(0, 20),
                  ("?order=" + order + ": order is").substr(0, 20));
    EXPECT_EQ(complaintAboutKey("a.vtu?component="),
              "?component=: component is the name of a component, or a number from 0");
    for (const std::string reach : {"far", "-1", "inf", "nan", ""})
        EXPECT_EQ(complaintAboutKey("a.vtu?reach=" + reach),
                  "?reach=" + reach + ": reach is a distance, 0 or more");
    EXPECT_EQ(complaintAboutKey("a.vtu?time=1&on=cells&time=2"),
              "the key \"time\" appears twice in a data reference");
    EXPECT_EQ(complaintAboutKey("#U"),
              "\"#U\" names no file; a data reference is FILE#ARRAY?key=value&key=value");
}

/// Writes the same grid in every way that VTK knows.
class EveryEncoding : public ReaderTest
{
protected:
    static vtkSmartPointer<vtkUnstructuredGrid> makeGrid()
    {
        vtkNew<vtkPoints> points;
        for (int i = 0; i < 8; ++i)
            points->InsertNextPoint(i % 2, i / 2 % 2, 0.1 * i);
        auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
        grid->SetPoints(points);
        const vtkIdType quad[]{0, 1, 3, 2};
        const vtkIdType tetrahedron[]{0, 1, 2, 4};
        grid->InsertNextCell(VTK_QUAD, 4, quad);
        grid->InsertNextCell(VTK_TETRA, 4, tetrahedron);
        // More than one block of compressed data.
        vtkNew<vtkDoubleArray> wide;
        wide->SetName("wide [m/s]");
        wide->SetNumberOfComponents(375);
        wide->SetNumberOfTuples(8);
        for (vtkIdType i = 0; i < wide->GetNumberOfValues(); ++i)
            wide->SetValue(i, 0.5 * static_cast<double>(i));
        grid->GetPointData()->AddArray(wide);
        vtkNew<vtkStringArray> names;
        names->SetName("names");
        for (int i = 0; i < 8; ++i)
            names->InsertNextValue("a name");
        grid->GetPointData()->AddArray(names);
        vtkNew<vtkIntArray> numbers;
        numbers->SetName("numbers");
        numbers->InsertNextValue(-7);
        numbers->InsertNextValue(1 << 30);
        grid->GetCellData()->AddArray(numbers);
        vtkNew<vtkDoubleArray> time;
        time->SetName("TimeValue");
        time->InsertNextValue(2.5);
        grid->GetFieldData()->AddArray(time);
        return grid;
    }

    void expectTheGrid(const std::string& name)
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(loadValues<Scalar>(name + "#numbers"),
                  (std::vector<Scalar>{{-7.0}, {1073741824.0}}));
        const auto wide = load(name + "#wide [m/s]");
        EXPECT_EQ(wide->timeSteps(), std::vector<double>{2.5});
        const std::vector<Vector375> values = valuesOf<Vector375>(*wide);
        ASSERT_EQ(values.size(), 8U);
        for (std::size_t i = 0; i < 8; ++i)
            for (std::size_t k = 0; k < 375; ++k)
                ASSERT_EQ(values[i][k], 0.5 * static_cast<double>(i * 375 + k));
        EXPECT_EQ(cellsOf(*wide->domain()),
                  (std::vector<std::string>{"Quads: 0 1 3 2", "Tetrahedra: 0 1 2 4"}));
        EXPECT_EQ(dynamic_cast<const PointSet<3>&>(*wide->domain()).point(7),
                  (Vector3{1.0, 1.0, 0.7F}));
        EXPECT_EQ(loader().inspect(reference(name)).arrays.size(), 2U);
    }
};

TEST_F(EveryEncoding, OfXmlGivesTheSame)
{
    const auto grid = makeGrid();
    int number = 0;
    for (const int mode : {vtkXMLWriter::Ascii, vtkXMLWriter::Binary, vtkXMLWriter::Appended})
        for (const int compressor :
             {vtkXMLWriter::NONE, vtkXMLWriter::ZLIB, vtkXMLWriter::LZ4, vtkXMLWriter::LZMA})
            for (const bool isOther : {false, true})
            {
                vtkNew<vtkXMLUnstructuredGridWriter> writer;
                const std::string name = std::to_string(number++) + ".vtu";
                writer->SetFileName((folder() / name).c_str());
                writer->SetInputData(grid);
                writer->SetDataMode(mode);
                writer->SetCompressorType(compressor);
                writer->SetBlockSize(4096);
                writer->SetEncodeAppendedData(isOther);
                writer->SetHeaderType(isOther ? vtkXMLWriter::UInt64 : vtkXMLWriter::UInt32);
                writer->SetByteOrder(isOther ? vtkXMLWriter::BigEndian
                                             : vtkXMLWriter::LittleEndian);
                writer->SetIdType(isOther ? vtkXMLWriter::Int32 : vtkXMLWriter::Int64);
                ASSERT_TRUE(writer->Write());
                expectTheGrid(name);
            }
}

TEST_F(EveryEncoding, OfTheLegacyFormatGivesTheSame)
{
    const auto grid = makeGrid();
    for (const int version : {42, 51})
        for (const int type : {VTK_ASCII, VTK_BINARY})
        {
            vtkNew<vtkUnstructuredGridWriter> writer;
            const std::string name = std::to_string(version) + "-" + std::to_string(type) + ".vtk";
            writer->SetFileName((folder() / name).c_str());
            writer->SetInputData(grid);
            writer->SetFileVersion(version);
            writer->SetFileType(type);
            ASSERT_TRUE(writer->Write());
            expectTheGrid(name);
        }
}

TEST_F(Reader, KeepsThePrecisionOfAnArray)
{
    std::string arrays;
    const std::vector<std::string> types{"Int8",   "Int16",  "Int32",  "Int64",   "UInt8",
                                         "UInt16", "UInt32", "UInt64", "Float32", "Float64"};
    for (const std::string& type : types)
        arrays += dataArray("type=\"" + type + "\" Name=\"" + type + "\"",
                            type.starts_with("U") ? "0 1 2 3 4 127" : "-128 1 2 3 4 127");
    create("a.vti", smallImage("<PointData>" + arrays + "</PointData>"));
    for (std::size_t i = 0; i < types.size(); ++i)
    {
        const auto function = load("a.vti#" + types[i]);
        EXPECT_EQ(function->values()->precision(), static_cast<Precision>(i));
        const auto values = valuesOf<Scalar>(*function);
        EXPECT_EQ(values.front(), Scalar{types[i].starts_with("U") ? 0.0 : -128.0});
        EXPECT_EQ(values.back(), Scalar{127.0});
    }
}

TEST_F(Reader, ReadsNumbersThatAreNoneFromText)
{
    create("a.vti",
           smallImage("<PointData>" +
                      dataArray("type=\"Float32\" Name=\"p\"", "nan -inf +1 1e99 1e-99 -NAN") +
                      "</PointData>"));
    create("a.vtk",
           "# vtk DataFile Version 3.0\n\nASCII\nDATASET STRUCTURED_POINTS\nDIMENSIONS 3 2 1\n"
           "ORIGIN 0 0 0\nSPACING 1 1 1\nPOINT_DATA 6\nSCALARS p float\nLOOKUP_TABLE default\n"
           "nan -inf +1 1e99 1e-99 -NAN\n");
    for (const std::string name : {"a.vti", "a.vtk"})
    {
        const auto values = loadValues<Scalar>(name);
        EXPECT_TRUE(std::isnan(values[0][0]));
        EXPECT_EQ(values[1][0], -std::numeric_limits<double>::infinity());
        EXPECT_EQ(values[2][0], 1.0);
        EXPECT_EQ(values[3][0], std::numeric_limits<double>::infinity());
        EXPECT_EQ(values[4][0], 0.0);
        EXPECT_TRUE(std::isnan(values[5][0]));
    }
}

TEST_F(Reader, MakesAMaskTheValidityOfFunctions)
{
    const std::string mask = dataArray("type=\"Int8\" Name=\"vtkValidPointMask\"", "1 0 1 1 2 1");
    create("a.vti",
           smallImage("<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "1 2 3 4 5 6") + mask +
                      "</PointData><CellData>" + dataArray("type=\"Int8\" Name=\"c\"", "1 2") +
                      "</CellData>"));
    const auto masked = load("a.vti#p");
    ASSERT_NE(masked->validity(), nullptr);
    EXPECT_EQ(*masked->validity(), (ValidityMask{1, 0, 1, 1, 1, 1}));
    EXPECT_EQ(load("a.vti#c")->validity(), nullptr);
    EXPECT_EQ(load("a.vti#vtkValidPointMask")->validity(), nullptr);
    EXPECT_EQ(usageErrorOf("a.vti#q"), "a.vti: no array \"q\"; there are \"p\", \"c\"");

    // Steps without a mask are valid everywhere.
    create("b.vti",
           smallImage("<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "1 2 3 4 5 6") +
                      "</PointData>"));
    create("s.pvd", vtkFile("Collection", "<Collection><DataSet timestep=\"0\" file=\"b.vti\"/>"
                                          "<DataSet timestep=\"1\" file=\"a.vti\"/></Collection>"));
    EXPECT_EQ(*load("s.pvd#p")->validity(), (ValidityMask{1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1}));
    EXPECT_EQ(load("b.vti")->validity(), nullptr);
}

TEST_F(Reader, KnowsNamesInLatin1)
{
    create("a.vtk", "# vtk DataFile Version 3.0\nt\nASCII\nDATASET STRUCTURED_POINTS\n"
                    "DIMENSIONS 2 1 1\nPOINT_DATA 2\nSCALARS Str\xf6mung int\n"
                    "LOOKUP_TABLE default\n1 2\n");
    EXPECT_EQ(load("a.vtk")->name(), "Str\xc3\xb6mung");
    EXPECT_EQ(load("a.vtk#Str\xc3\xb6mung")->name(), load("a.vtk#Str\xf6mung")->name());
}

TEST_F(Reader, TakesShapesFromComponentsAndTheirNames)
{
    const auto numbers = [](int components)
    {
        std::string text;
        for (int i = 0; i < 6 * components; ++i)
            text += std::to_string(i % components) + " ";
        return text;
    };
    std::string arrays;
    for (const int components : {1, 2, 3, 4, 5, 6, 9, 16, 242})
        arrays += dataArray("type=\"Int32\" Name=\"" + std::to_string(components) +
                                "\" NumberOfComponents=\"" + std::to_string(components) + "\"",
                            numbers(components));
    const auto named = [](const std::vector<std::string>& names)
    {
        std::string text = "NumberOfComponents=\"" + std::to_string(names.size()) + "\"";
        for (std::size_t i = 0; i < names.size(); ++i)
            text += " ComponentName" + std::to_string(i) + "=\"" + names[i] + "\"";
        return text;
    };
    arrays +=
        dataArray("type=\"Int32\" Name=\"2x2\" " + named({"xx", "xy", "yx", "yy"}), numbers(4));
    arrays += dataArray("type=\"Int32\" Name=\"1x1\" " + named({"xx"}), numbers(1));
    arrays += dataArray("type=\"Int32\" Name=\"v1\" " + named({"x"}), numbers(1));
    arrays += dataArray("type=\"Int32\" Name=\"rgba\" " + named({"r", "g", "b", "a"}), numbers(4));
    create("a.vti", smallImage("<PointData>" + arrays + "</PointData>"));

    std::map<std::string, std::string> types;
    for (const FileInfo::Array& array : loader().inspect(reference("a.vti")).arrays)
    {
        types[array.name] = array.valueType;
        if (!array.valueType.empty())
        {
            EXPECT_EQ(load("a.vti#" + array.name)->valueTypeName(), array.valueType);
        }
    }
    EXPECT_EQ(types, (std::map<std::string, std::string>{{"1", "Scalar"},
                                                         {"2", "2-D Vector"},
                                                         {"3", "3-D Vector"},
                                                         {"4", "4-D Vector"},
                                                         {"5", ""},
                                                         {"6", "3x3 Matrix"},
                                                         {"9", "3x3 Matrix"},
                                                         {"16", "4x4 Matrix"},
                                                         {"242", "242-D Vector"},
                                                         {"2x2", "2x2 Matrix"},
                                                         {"1x1", "1x1 Matrix"},
                                                         {"v1", "1-D Vector"},
                                                         {"rgba", "4-D Vector"}}));
    // XX YY ZZ XY YZ XZ
    EXPECT_EQ(loadValues<Matrix3>("a.vti#6").front(), (Matrix3{0, 3, 5, 3, 1, 4, 5, 4, 2}));
    EXPECT_EQ(loadValues<Matrix2>("a.vti#4?shape=2x2").front(), (Matrix2{0, 1, 2, 3}));
    EXPECT_EQ(loadValues<Vector4>("a.vti#2x2?shape=4").front(), (Vector4{0, 1, 2, 3}));
    EXPECT_EQ(loadValues<Matrix1>("a.vti#1?shape=1x1").size(), 6U);
    EXPECT_EQ(
        usageErrorOf("a.vti#4?shape=3"),
        "a.vti: \"4\" has 4 components, which does not fit ?shape=3; shapes that fit: 4, 2x2");
    EXPECT_EQ(usageErrorOf("a.vti#5"),
              "a.vti: \"5\" has 5 components; only arrays of 1, 2, 3, 4, "
              "6, 9, 16, 242 or 375 components are fields, and single components, "
              "which ?component= chooses");
}

TEST_F(Reader, NamesTheArraysThatThereAre)
{
    const std::string p = dataArray("type=\"Float32\" Name=\"pressure\"", "1 2 3 4 5 6");
    const std::string u = dataArray("type=\"Float32\" Name=\"velocity\"", "1 2 3 4 5 6");
    const std::string c = dataArray("type=\"Float32\" Name=\"velocity\"", "1 2");
    create("none.vti", smallImage(""));
    create("one.vti", smallImage("<PointData>" + p + "</PointData>"));
    create("both.vti",
           smallImage("<PointData>" + p + u + "</PointData><CellData>" + c + "</CellData>"));
    EXPECT_EQ(load("one.vti")->name(), "pressure");
    EXPECT_EQ(load("both.vti?on=cells")->domainType(), DomainType::CellBased);
    EXPECT_EQ(load("both.vti#velocity?on=points")->domainType(), DomainType::PointBased);
    EXPECT_EQ(usageErrorOf("none.vti"), "none.vti: holds no arrays");
    EXPECT_EQ(usageErrorOf("one.vti?on=cells"), "one.vti: holds no arrays on cells");
    EXPECT_EQ(usageErrorOf("both.vti"),
              "both.vti: holds several arrays, choose one with #ARRAY: "
              "\"pressure\", \"velocity\" on points, \"velocity\" on cells");
    EXPECT_EQ(usageErrorOf("both.vti#presure"),
              "both.vti: no array \"presure\"; did you mean \"pressure\"?");
    EXPECT_EQ(usageErrorOf("both.vti#velocity"),
              "both.vti: \"velocity\" is an array on points and one "
              "on cells; add ?on=points or ?on=cells");
    EXPECT_EQ(usageErrorOf("one.vti#pressure?time=3"),
              "one.vti: holds no time steps; leave out ?time=3");
    EXPECT_EQ(
        withoutFolder(
            errorOf<usage_error>([&] { loader().loadGrid(reference("one.vti#pressure")); })),
        "one.vti: a grid is wanted, so leave out #ARRAY, ?on=, ?shape=, ?component= and ?order=");
}

TEST_F(Reader, TakesOneComponentOfAnArray)
{
    const auto array = [](const std::string& name, int components, const std::string& more = "")
    {
        std::string numbers;
        for (int i = 0; i < 6 * components; ++i)
            numbers += std::to_string(i) + " ";
        return dataArray("type=\"Int16\" Name=\"" + name + "\" NumberOfComponents=\"" +
                             std::to_string(components) + "\" " + more,
                         numbers);
    };
    create("a.vti",
           smallImage("<PointData>" + array("v", 3) + array("s", 6) + array("m", 4) +
                      array("odd", 7) + array("p", 1) +
                      array("named", 3,
                            R"(ComponentName0="Radial" ComponentName1="z" ComponentName2="1")") +
                      "</PointData>"));
    struct Case
    {
        std::string reference;
        std::string name;
        double second;
    };
    for (const auto& [text, name, second] : std::vector<Case>{
             {"v?component=y", "v y", 4},
             {"v?component=2", "v z", 5},
             {"v?component=Z", "v z", 5},
             {"s?component=yz", "s yz", 10},
             {"s?component=zy", "s yz", 10},
             {"s?component=yz&order=voigt", "s yz", 9},
             {"s?component=3&order=voigt", "s yz", 9},
             {"m?component=w", "m w", 7},
             {"m?component=yx&shape=2x2", "m yx", 6},
             {"odd?component=6", "odd 6", 13},
             {"p?component=0", "p x", 1},
             // The names in the file come first, then the usual ones, then numbers.
             {"named?component=radial", "named Radial", 3},
             {"named?component=z", "named z", 4},
             {"named?component=1", "named 1", 5},
             {"named?component=0", "named Radial", 3},
         })
    {
        const auto function = load("a.vti#" + text);
        EXPECT_EQ(function->name(), name) << text;
        EXPECT_EQ(valuesOf<Scalar>(*function)[1][0], second) << text;
    }
    EXPECT_EQ(usageErrorOf("a.vti#v?component=u"),
              "a.vti: \"v\" has no component \"u\"; there are \"x\", \"y\", \"z\"");
    EXPECT_EQ(usageErrorOf("a.vti#named?component=radal"),
              "a.vti: \"named\" has no component \"radal\"; did you mean \"Radial\"?");
    EXPECT_EQ(usageErrorOf("a.vti#odd?component=7"),
              "a.vti: \"odd\" has no component \"7\"; they are numbered 0 to 6");
}

TEST_F(Reader, ReadsSixComponentsInTheOrderOfTheFile)
{
    const auto array = [](const std::string& name, const std::string& more)
    {
        std::string numbers;
        for (int i = 0; i < 6; ++i)
            numbers += "0 1 2 3 4 5 ";
        return dataArray("type=\"Float32\" Name=\"" + name + "\" NumberOfComponents=\"6\" " + more,
                         numbers);
    };
    create("a.vti",
           smallImage("<PointData>" + array("plain", "") +
                      array("named", R"(ComponentName0="XX" ComponentName1="XY" ComponentName2="XZ"
                          ComponentName3="YY" ComponentName4="YZ" ComponentName5="ZZ")") +
                      array("other", R"(ComponentName0="XX" ComponentName1="XY")") +
                      "</PointData>"));
    const auto first = [&](const std::string& text)
    { return loadValues<Matrix3>("a.vti#" + text).front(); };
    const Matrix3 ofVtk{0, 3, 5, 3, 1, 4, 5, 4, 2};
    const Matrix3 ofVoigt{0, 5, 4, 5, 1, 3, 4, 3, 2};
    const Matrix3 byRows{0, 1, 2, 1, 3, 4, 2, 4, 5};
    EXPECT_EQ(first("plain"), ofVtk);
    EXPECT_EQ(first("other"), ofVtk);
    EXPECT_EQ(first("plain?order=voigt"), ofVoigt);
    EXPECT_EQ(first("plain?order=xx,xy,xz,YY,zy,zz"), byRows);
    EXPECT_EQ(first("named"), byRows);
    EXPECT_EQ(first("named?order=xx,yy,zz,xy,yz,xz"), ofVtk);
    create("v.vti",
           smallImage("<PointData>" + dataArray("type=\"Int8\" Name=\"v\"", "1 2 3 4 5 6") +
                      "</PointData>"));
    EXPECT_EQ(usageErrorOf("v.vti?order=voigt"),
              "v.vti: \"v\" has 1 component; ?order= is for arrays of 6");
}

TEST_F(Reader, LetsSurfacesReachBesideThemselves)
{
    create("a.vtu",
           gridFile(3, "0 0 1 1 0 1 0 1 1", 1, "0 1 2", "3", "5",
                    "<CellData>" + dataArray("type=\"Int8\" Name=\"c\"", "7") + "</CellData>"));
    EXPECT_EQ(load("a.vtu#c?reach=0.25")->reach(), 0.25);
    EXPECT_EQ(load("a.vtu#c")->reach(), 0.0);
}

TEST_F(Reader, ReadsPlanarVectorsAsVectorsOfTwo)
{
    const auto image = [](const std::string& numbers)
    {
        return smallImage(
            "<PointData>" +
            dataArray("type=\"Float64\" Name=\"v\" NumberOfComponents=\"3\"", numbers) +
            "</PointData>");
    };
    create("flat.vti", image("1 2 0 3 4 -0 5 6 0 0 0 0 0 0 0 7 8 0"));
    create("bent.vti", image("1 2 0 3 4 0 5 6 0 0 0 0.5 0 0 nan 7 8 0"));
    EXPECT_EQ(loadValues<Vector2>("flat.vti?shape=2").back(), (Vector2{7, 8}));
    EXPECT_EQ(loadValues<Vector3>("flat.vti").back(), (Vector3{7, 8, 0}));
    EXPECT_EQ(usageErrorOf("bent.vti?shape=2"),
              "bent.vti: \"v\" does not fit ?shape=2: its third component is not 0 everywhere, "
              "value 3 has 0.5");
    EXPECT_EQ(usageErrorOf("flat.vti?shape=4"),
              "flat.vti: \"v\" has 3 components, which does not fit ?shape=4; shapes that fit: 3, "
              "and 2 where the third component is 0 everywhere");
}

TEST_F(Reader, DropsCoordinatesThatAreZeroEverywhere)
{
    create("volume.vtu", gridFile(2, "0 0 0  1 1 1", 1, "0 1", "2", "3"));
    create("plane.vtu", gridFile(2, "0 0 0  1 1 0", 1, "0 1", "2", "3"));
    create("line.vtu", gridFile(2, "0 0 0  1 0 0", 1, "0 1", "2", "3"));
    create("upright.vtu", gridFile(2, "0 0 0  1 0 1", 1, "0 1", "2", "3"));
    const auto dimensionOf = [&](const std::string& text)
    { return loader().inspect(reference(text)).dimension; };
    EXPECT_EQ(dimensionOf("volume.vtu"), 3U);
    EXPECT_EQ(dimensionOf("plane.vtu"), 2U);
    EXPECT_EQ(dimensionOf("line.vtu"), 1U);
    EXPECT_EQ(dimensionOf("upright.vtu"), 3U);
    EXPECT_EQ(dimensionOf("line.vtu?dimension=2"), 2U);
    EXPECT_EQ(dimensionOf("plane.vtu?dimension=3"), 3U);
    EXPECT_EQ(withoutFolder(errorOf<usage_error>([&] { dimensionOf("plane.vtu?dimension=1"); })),
              "plane.vtu: the points need 2 coordinates, so that ?dimension=1 does not fit");
}

TEST_F(Reader, PlacesUniformGridsByExtentAndDirection)
{
    create("a.vti",
           vtkFile("ImageData", "<ImageData WholeExtent=\"2 4 -1 0 5 6\" Origin=\"10 20 30\" "
                                "Spacing=\"0.5 2 1\" Direction=\"0 -1 0 1 0 0 0 0 1\">"
                                "<Piece Extent=\"2 4 -1 0 5 6\"/></ImageData>"));
    const auto domain = loader().loadGrid(reference("a.vti"));
    const auto& grid = dynamic_cast<const UniformGrid<3>&>(*domain);
    EXPECT_TRUE(grid.isOriented());
    EXPECT_EQ(grid.size(), (GridSize{3, 2, 2}));
    // index (2, -1, 5): (1, -2, 5) turned by a right angle
    EXPECT_EQ(grid.point(0), (Vector3{12.0, 21.0, 35.0}));
    EXPECT_EQ(loader().inspect(reference("a.vti")).bounds,
              (std::vector<std::pair<double, double>>{{10.0, 12.0}, {21.0, 22.0}, {35.0, 36.0}}));

    // An axis of several points that leaves the plane keeps the grid three-dimensional.
    create("flat.vti", smallImage("", "Direction=\"0 -1 0 1 0 0 0 0 1\""));
    EXPECT_NO_THROW(dynamic_cast<const UniformGrid<2>&>(*loader().loadGrid(reference("flat.vti"))));
    create("odd.vti", smallImage("", "Direction=\"0 0 1 1 0 0 0 1 0\""));
    EXPECT_NO_THROW(dynamic_cast<const UniformGrid<3>&>(*loader().loadGrid(reference("odd.vti"))));
}

TEST_F(Reader, JoinsThePiecesOfAFile)
{
    const auto piece =
        [](const std::string& extent, const std::string& points, const std::string& cells)
    {
        return "<Piece Extent=\"" + extent + "\"><PointData>" +
               dataArray("type=\"Int8\" Name=\"p\"", points) + "</PointData><CellData>" +
               dataArray("type=\"Int8\" Name=\"c\"", cells) + "</CellData></Piece>";
    };
    const auto image = [&](const std::string& pieces)
    {
        return vtkFile("ImageData",
                       "<ImageData WholeExtent=\"0 3 0 1 0 0\" Origin=\"0 0 0\" Spacing=\"1 "
                       "1 1\">" +
                           pieces + "</ImageData>");
    };
    create("two.vti", image(piece("0 1 0 1 0 0", "0 1 4 5", "10") +
                            piece("1 3 0 1 0 0", "1 2 3 5 6 7", "11 12")));
    EXPECT_EQ(loadValues<Scalar>("two.vti#p"),
              (std::vector<Scalar>{{0.0}, {1.0}, {2.0}, {3.0}, {4.0}, {5.0}, {6.0}, {7.0}}));
    EXPECT_EQ(loadValues<Scalar>("two.vti#c"), (std::vector<Scalar>{{10.0}, {11.0}, {12.0}}));
    create("hole.vti",
           image(piece("0 1 0 1 0 0", "0 1 4 5", "10") + piece("2 3 0 1 0 0", "2 3 6 7", "12")));
    EXPECT_EQ(complaintAbout("hole.vti"), "hole.vti: its pieces have 2 cells, the whole has 3");
    create("twice.vti", image(piece("0 1 0 1 0 0", "0 1 4 5", "10") +
                              piece("0 2 0 1 0 0", "0 1 2 4 5 6", "10 11")));
    EXPECT_EQ(complaintAbout("twice.vti"), "twice.vti: its pieces overlap");
    create("flat.vti",
           image(piece("0 2 0 1 0 0", "0 1 2 4 5 6", "10 11") + piece("3 3 0 1 0 0", "3 7", "12")));
    EXPECT_EQ(complaintAbout("flat.vti"), "flat.vti: a piece is flat where the whole is not");

    const auto part = [](const std::string& x, const std::string& value)
    {
        return "<Piece NumberOfPoints=\"3\" NumberOfVerts=\"1\" NumberOfPolys=\"1\"><Points>" +
               dataArray("type=\"Float32\" NumberOfComponents=\"3\"",
                         x + " 0 0 " + x + " 1 0 " + x + " 1 1") +
               "</Points><Polys>" + dataArray("type=\"Int32\" Name=\"connectivity\"", "0 1 2") +
               dataArray("type=\"Int32\" Name=\"offsets\"", "3") + "</Polys><Verts>" +
               dataArray("type=\"Int32\" Name=\"connectivity\"", "2") +
               dataArray("type=\"Int32\" Name=\"offsets\"", "1") + "</Verts><CellData>" +
               dataArray("type=\"Int8\" Name=\"c\"", value) + "</CellData></Piece>";
    };
    create("two.vtp",
           vtkFile("PolyData", "<PolyData>" + part("1", "1 2") + part("2", "3 4") + "</PolyData>"));
    const auto function = load("two.vtp");
    EXPECT_EQ(cellsOf(*function->domain()),
              (std::vector<std::string>{"Points: 2", "Triangles: 0 1 2", "Points: 5",
                                        "Triangles: 3 4 5"}));
    EXPECT_EQ(valuesOf<Scalar>(*function), (std::vector<Scalar>{{1.0}, {2.0}, {3.0}, {4.0}}));
}

TEST_F(Reader, KeepsTheArraysOfAFileWithoutPoints)
{
    create("none.vtu",
           gridFile(0, "", 0, "", "", "",
                    "<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "") + "</PointData>"));
    EXPECT_TRUE(loadValues<Scalar>("none.vtu#p").empty());
}

TEST_F(Reader, ReadsRectilinearAndCurvilinearGrids)
{
    const std::string values = dataArray("type=\"Float64\" Name=\"p\"", "0 1 2 3 4 5");
    create("a.vtr",
           vtkFile("RectilinearGrid",
                   "<RectilinearGrid WholeExtent=\"0 2 3 4 0 0\"><Piece Extent=\"0 2 3 4 0 0\">"
                   "<PointData>" +
                       values + "</PointData><Coordinates>" + dataArray("type=\"Int32\"", "0 1 5") +
                       dataArray("type=\"Float32\"", "2 1") + dataArray("type=\"Float32\"", "0") +
                       "</Coordinates></Piece></RectilinearGrid>"));
    const auto rectilinear = load("a.vtr");
    EXPECT_EQ(dynamic_cast<const RectilinearGrid<2>&>(*rectilinear->domain()).point(5),
              (Vector2{5.0, 1.0}));
    EXPECT_EQ(loader().inspect(reference("a.vtr")).bounds,
              (std::vector<std::pair<double, double>>{{0.0, 5.0}, {1.0, 2.0}}));
    create("a.vts",
           vtkFile("StructuredGrid",
                   "<StructuredGrid WholeExtent=\"0 2 0 1 0 0\"><Piece Extent=\"0 2 0 1 0 0\">"
                   "<PointData>" +
                       values + "</PointData><Points>" +
                       dataArray("type=\"Float64\" NumberOfComponents=\"3\"",
                                 "0 0 1 1 0 1 2 0 1  0 1 1 1 1 2 2 1 3") +
                       "</Points></Piece></StructuredGrid>"));
    const auto curvilinear = load("a.vts");
    EXPECT_EQ(dynamic_cast<const CurvilinearGrid<3>&>(*curvilinear->domain()).point(5),
              (Vector3{2.0, 1.0, 3.0}));
    EXPECT_EQ(cellsOf(*curvilinear->domain()),
              (std::vector<std::string>{"Quads: 0 1 4 3", "Quads: 1 2 5 4"}));

    // The legacy format, with keywords in an order that is not the usual one.
    create("a.vtk",
           "# vtk DataFile Version 2.0\ntitle\nASCII\nDATASET RECTILINEAR_GRID\nDIMENSIONS 3 2 1\n"
           "Z_COORDINATES 1 float\n0\nX_COORDINATES 3 int\n0 1 5\nY_COORDINATES 2 float\n2 1\n"
           "POINT_DATA 6\nFIELD data 1\na%20b 1 6 double\n0 1 2 3 4 5\n");
    const auto legacy = load("a.vtk#a b");
    EXPECT_TRUE(legacy->domain()->equals(*rectilinear->domain()));
    EXPECT_EQ(legacy->domain(), rectilinear->domain()) << "equal grids are one object";
}

TEST_F(Reader, GivesPointsWithoutCellsAsACloud)
{
    create("a.vtu",
           gridFile(2, "0 0 0  1 1 1", 0, "", "", "",
                    "<PointData>" + dataArray("type=\"Int8\" Name=\"p\"", "7 8") + "</PointData>"));
    const auto function = load("a.vtu");
    EXPECT_NE(dynamic_cast<const PointCloud<3>*>(function->domain().get()), nullptr);
    EXPECT_EQ(valuesOf<Scalar>(*function), (std::vector<Scalar>{{7.0}, {8.0}}));
}

}
