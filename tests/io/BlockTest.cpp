#include "ReaderSamples.hpp"

#include <tavrin/field/Field.hpp>
#include <tavrin/io/series/Collection.hpp>

#include <vtkCompositeDataSet.h>
#include <vtkDoubleArray.h>
#include <vtkImageData.h>
#include <vtkInformation.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkXMLMultiBlockDataWriter.h>

#include <cmath>

namespace
{

using namespace samples;

using Functions = std::vector<std::shared_ptr<const FunctionBase>>;

/// A row of square cells along x, or of cubes where it is `thick`, with an array of one number.
std::string row(double firstX, double value, const std::string& array = "p", bool isThick = false)
{
    std::ostringstream text;
    text << "<ImageData WholeExtent=\"0 2 0 1 0 " << isThick << "\" Origin=\"" << firstX
         << " 0 0\" Spacing=\"1 1 1\"><Piece Extent=\"0 2 0 1 0 " << isThick << "\"><PointData>"
         << "<DataArray format=\"ascii\" type=\"Float64\" Name=\"" << array << "\">";
    for (int i = 0; i < (isThick ? 12 : 6); ++i)
        text << value << ' ';
    text << "</DataArray></PointData></Piece></ImageData>";
    return vtkFile("ImageData", text.str());
}

std::string blockFile(const std::string& content)
{
    return vtkFile("vtkMultiBlockDataSet",
                   "<vtkMultiBlockDataSet>" + content + "</vtkMultiBlockDataSet>");
}

/// A multi-block file of named files.
std::string blocks(const std::vector<std::pair<std::string, std::string>>& files)
{
    std::string content;
    for (const auto& [name, file] : files)
        content += "<DataSet name=\"" + name + "\" file=\"" + file + "\"/>\n";
    return blockFile(content);
}

/// A series of files, each with its time and part.
std::string pvd(const std::vector<std::array<std::string, 3>>& files)
{
    std::string sets;
    for (const auto& [time, part, file] : files)
        sets +=
            "<DataSet timestep=\"" + time + "\" part=\"" + part + "\" file=\"" + file + "\"/>\n";
    return vtkFile("Collection", "<Collection>" + sets + "</Collection>");
}

class Blocks : public ReaderTest
{
protected:
    Functions loadAll(const std::string& text) { return loader().loadFunctions(reference(text)); }

    /// The first value of each block at its first step.
    std::vector<double> firstValues(const std::string& text)
    {
        std::vector<double> values;
        for (const auto& function : loadAll(text))
            values.push_back(valuesOf<Scalar>(*function).front()[0]);
        return values;
    }

    std::string errorFor(const std::string& text)
    {
        return withoutFolder(errorOf<FileError>([&] { loadAll(text); }));
    }

    std::string refusalOf(const std::string& text)
    {
        return withoutFolder(errorOf<usage_error>([&] { loadAll(text); }));
    }
};

/// The value of the blocks as one field, or not-a-number outside of all.
template<std::size_t D>
double sampleAt(const Functions& functions, const Tensor<double, D>& position, double time = 0.0)
{
    const auto field = Field<D, Scalar>::applyTo(
        DataObjectBundle(DataObjectBundle::Members(functions.begin(), functions.end())));
    if (field == nullptr)
        throw std::runtime_error("the blocks are no field");
    const auto evaluator = field->makeEvaluator();
    evaluator->reset(time, position);
    return evaluator->isValid() ? evaluator->value()[0] : std::nan("");
}

vtkNew<vtkImageData> image(double firstX, double slope)
{
    vtkNew<vtkImageData> grid;
    grid->SetDimensions(3, 2, 1);
    grid->SetOrigin(firstX, 0.0, 0.0);
    vtkNew<vtkDoubleArray> values;
    values->SetName("p");
    for (vtkIdType i = 0; i < grid->GetNumberOfPoints(); ++i)
        values->InsertNextValue(slope * grid->GetPoint(i)[0]);
    grid->GetPointData()->AddArray(values);
    return grid;
}

TEST_F(Blocks, WrittenByVtkAreOneField)
{
    vtkNew<vtkMultiBlockDataSet> inner;
    inner->SetBlock(0, image(2.0, 10.0));
    inner->SetBlock(1, nullptr);
    inner->SetBlock(2, image(0.0, 1.0));
    inner->GetMetaData(2U)->Set(vtkCompositeDataSet::NAME(), "in");
    vtkNew<vtkMultiBlockDataSet> outer;
    outer->SetBlock(0, inner);
    outer->GetMetaData(0U)->Set(vtkCompositeDataSet::NAME(), "a <flow>");
    outer->SetBlock(1, image(4.0, 100.0));
    vtkNew<vtkXMLMultiBlockDataWriter> writer;
    writer->SetFileName((folder() / "all.vtm").c_str());
    writer->SetInputData(outer);
    ASSERT_EQ(writer->Write(), 1);

    const Functions functions = loadAll("all.vtm");
    ASSERT_EQ(functions.size(), 3U);
    const auto at = [&](double x) { return sampleAt<2>(functions, {x, 0.5}); };
    EXPECT_EQ(at(0.5), 0.5);
    EXPECT_EQ(at(3.5), 35.0);
    EXPECT_EQ(at(5.0), 500.0);
    // Where blocks touch, the first in the file answers.
    EXPECT_EQ(at(2.0), 20.0);
    EXPECT_EQ(at(4.0), 40.0);
    EXPECT_TRUE(std::isnan(at(6.5)));
    EXPECT_TRUE(warnings().empty());

    const FileInfo info = loader().inspect(reference("all.vtm"));
    ASSERT_EQ(info.blocks.size(), 3U);
    EXPECT_EQ(info.blocks[0].block, "a <flow>/0");
    EXPECT_EQ(info.blocks[1].block, "a <flow>/in");
    EXPECT_EQ(info.blocks[2].block, "1");
    EXPECT_EQ(info.points, 18U);
    EXPECT_EQ(info.bounds.front(), std::pair(0.0, 6.0));
}

TEST_F(Blocks, OfTheFirstVersionAndInPiecesAreFound)
{
    create("a.vti", row(0, 1));
    create("b.vti", row(2, 2));
    create("flat.vtm", blockFile("<DataSet group=\"0\" dataset=\"0\" file=\"a.vti\"/>"
                                 "<DataSet group=\"1\" dataset=\"0\"/>"
                                 "<DataSet group=\"1\" dataset=\"1\" file=\"b.vti\"/>"));
    create("pieces.vtm", blockFile("<Piece index=\"3\"><DataSet index=\"0\" file=\"b.vti\"/>"
                                   "<DataSet index=\"1\" file=\"a.vti\"/></Piece>"));
    EXPECT_EQ(firstValues("flat.vtm"), (std::vector<double>{1, 2}));
    EXPECT_EQ(loader().inspect(reference("flat.vtm")).blocks[1].block, "1/1");
    EXPECT_EQ(firstValues("pieces.vtm"), (std::vector<double>{2, 1}));
}

TEST_F(Blocks, WithoutTheArrayAreLeftOut)
{
    create("a.vti", row(0, 1));
    create("b.vti", row(2, 2, "T"));
    create("c.vti", row(4, 3));
    create("empty.vtu", gridFile(0, "", 0, "", "", ""));
    create("cloud.vtu", gridFile(1, "9 9 9", 0, "", "", "",
                                 "<PointData>" + dataArray("type=\"Float64\" Name=\"p\"", "9") +
                                     "</PointData>"));
    create("m.vtm", blocks({{"none", "empty.vtu"},
                            {"a", "a.vti"},
                            {"b", "b.vti"},
                            {"dust", "cloud.vtu"},
                            {"c", "c.vti"}}));
    EXPECT_EQ(firstValues("m.vtm#p"), (std::vector<double>{1, 3}));
    EXPECT_EQ(warnings(),
              (std::vector<std::string>{"m.vtm: no array \"p\" in 1 of 5 blocks; left out: \"b\"",
                                        "m.vtm: no cells in 1 of 5 blocks; left out: \"dust\""}));
    EXPECT_EQ(refusalOf("m.vtm"),
              "m.vtm: holds several arrays, choose one with #ARRAY: \"p\", \"T\"");
    EXPECT_EQ(refusalOf("m.vtm#v"), "m.vtm: no array \"v\"; there are \"p\", \"T\"");
    EXPECT_EQ(refusalOf("m.vtm#p?on=cells"), "m.vtm: no array \"p\" on cells");
    EXPECT_EQ(refusalOf("m.vtm#p?shape=3"),
              "m.vtm: block \"a\": a.vti: \"p\" has 1 component, which "
              "does not fit ?shape=3; shapes that fit: scalar, 1, 1x1");
    EXPECT_EQ(refusalOf("m.vtm#p?time=1"), "m.vtm: block \"none\": empty.vtu: holds no time steps; "
                                           "leave out ?time=1");
}

TEST_F(Blocks, AreChosenByNameOrNumber)
{
    create("a.vti", row(0, 1));
    create("b.vti", row(0, 2));
    create("m.vtm", blocks({{"fluid", "a.vti"}, {"0", "b.vti"}, {"lost", "gone.vti"}}));
    create("s.pvd", pvd({{"0", "in", "a.vti"},
                         {"0", "out", "b.vti"},
                         {"1", "out", "a.vti"},
                         {"1", "in", "b.vti"}}));
    EXPECT_EQ(load("m.vtm?block=fluid")->values()->size(), 6U);
    // Names come before numbers.
    EXPECT_EQ(loadValues<Scalar>("m.vtm#p?block=0").front(), Scalar{2});
    EXPECT_EQ(loadValues<Scalar>("m.vtm#p?block=1").front(), Scalar{2});
    EXPECT_EQ(loader().inspect(reference("m.vtm?block=fluid")).points, 6U);
    EXPECT_EQ(loader().loadGrid(reference("m.vtm?block=fluid"))->numElements(PointSetBase::Points),
              6U);
    const auto series = loadValues<Scalar>("s.pvd?block=out");
    EXPECT_EQ(series.front(), Scalar{2});
    EXPECT_EQ(series.back(), Scalar{1});
    EXPECT_EQ(usageErrorOf("m.vtm?block=fluit"),
              "m.vtm: no block \"fluit\"; did you mean \"fluid\"?");
    EXPECT_EQ(usageErrorOf("m.vtm?block=3"),
              "m.vtm: no block \"3\"; there are \"fluid\", \"0\", \"lost\"");
    EXPECT_EQ(usageErrorOf("a.vti?block=0"), "a.vti: holds no blocks; leave out ?block=");
}

TEST_F(Blocks, HaveOneDimensionAndShareEqualGrids)
{
    create("flat.vti", row(0, 1));
    create("same.vti", row(0, 2));
    create("thick.vti", row(2, 3, "p", true));
    create("m.vtm", blocks({{"flat", "flat.vti"}, {"thick", "thick.vti"}, {"same", "same.vti"}}));
    create("flat.vtm", blocks({{"flat", "flat.vti"}, {"same", "same.vti"}}));
    const Functions functions = loadAll("m.vtm");
    EXPECT_EQ(sampleAt<3>(functions, {0.5, 0.5, 0.0}), 1.0);
    EXPECT_EQ(sampleAt<3>(functions, {3.5, 0.5, 0.5}), 3.0);
    EXPECT_EQ(functions[0]->domain(), functions[2]->domain());
    EXPECT_EQ(load("flat.vti?dimension=3")->domain(), functions[0]->domain());
    EXPECT_EQ(sampleAt<2>(loadAll("flat.vtm"), {0.5, 0.5}), 1.0);
    EXPECT_EQ(sampleAt<3>(loadAll("flat.vtm?dimension=3"), {0.5, 0.5, 0.0}), 1.0);
}

/// However the blocks of a step are listed, each is one function over all times.
TEST_F(Blocks, OfASeriesAreFunctionsOverAllTimes)
{
    for (const auto& [name, value] : {std::pair("0", 1.0), {"1", 2.0}})
    {
        create("s/a" + std::string(name) + ".vti", row(0, value));
        create("s/b" + std::string(name) + ".vti", row(2, 10 * value));
    }
    create("s/0.vtm", blocks({{"a", "a0.vti"}, {"b", "b0.vti"}}));
    // The order of the first step holds.
    create("s/1.vtm", blocks({{"b", "b1.vti"}, {"a", "a1.vti"}}));
    create("parts.pvd", pvd({{"10", "1", "s/b1.vti"},
                             {"0", "0", "s/a0.vti"},
                             {"10", "0", "s/a1.vti"},
                             {"0", "1", "s/b0.vti"}}));
    create("blocks.pvd", pvd({{"10", "0", "s/1.vtm"}, {"0", "0", "s/0.vtm"}}));
    create("both.pvd", pvd({{"0", "x", "s/0.vtm"},
                            {"0", "y", "s/a1.vti"},
                            {"10", "x", "s/1.vtm"},
                            {"10", "y", "s/a0.vti"}}));
    create("s.vtm.series", R"({"files": [{"name": "s/0.vtm", "time": 0},
                                         {"name": "s/1.vtm", "time": 10}]})");
    for (const std::string file : {"parts.pvd", "blocks.pvd", "both.pvd", "s.vtm.series"})
    {
        SCOPED_TRACE(file);
        const Functions functions = loadAll(file);
        ASSERT_EQ(functions.size(), file == "both.pvd" ? 3U : 2U);
        for (const auto& function : functions)
        {
            EXPECT_EQ(function->timeSteps(), (std::vector<double>{0, 10}));
            EXPECT_FALSE(function->values()->isInMemory());
        }
        EXPECT_EQ(sampleAt<2>(functions, {0.5, 0.5}, 10.0), 2.0);
        EXPECT_EQ(sampleAt<2>(functions, {3.5, 0.5}, 5.0), 15.0);
        EXPECT_EQ(sampleAt<2>(loadAll(file + "?time=10"), {3.5, 0.5}), 20.0);
        const FileInfo info = loader().inspect(reference(file));
        EXPECT_EQ(info.format, "time series of 2 steps");
        EXPECT_EQ(info.timeSteps, (std::vector<double>{0, 10}));
        EXPECT_EQ(info.blocks.size(), functions.size());
    }
    EXPECT_TRUE(warnings().empty());

    std::vector<std::string> files;
    for (const auto& file : loader().filesOf(reference("both.pvd")))
        files.push_back(file.lexically_relative(folder()).string());
    EXPECT_EQ(files,
              (std::vector<std::string>{"both.pvd", "s/0.vtm", "s/a0.vti", "s/b0.vti", "s/a1.vti",
                                        "s/1.vtm", "s/b1.vti", "s/a1.vti", "s/a0.vti"}));
}

TEST_F(Blocks, OfASeriesHaveToBeThereAtAllSteps)
{
    create("a.vti", row(0, 1));
    create("b.vti", row(2, 2));
    create("other.vti", row(3, 2));
    create("2.vtm", blocks({{"a", "a.vti"}, {"b", "b.vti"}}));
    create("1.vtm", blocks({{"a", "a.vti"}}));
    create("renamed.vtm", blocks({{"a", "a.vti"}, {"c", "b.vti"}}));
    create("moved.vtm", blocks({{"a", "a.vti"}, {"b", "other.vti"}}));
    create("gap.vtm", blocks({{"a", "a.vti"}, {"b", "gone.vti"}}));
    const auto after = [&](const std::string& file)
    {
        // A loader reads a list once.
        Loader other({}, neverAbort);
        create("s.pvd", pvd({{"0", "0", "2.vtm"}, {"1", "0", "2.vtm"}, {"2.5", "0", file}}));
        return withoutFolder(errorOf<FileError>([&] { other.loadFunctions(reference("s.pvd")); }));
    };
    const std::string start = "s.pvd: step 2 at t = 2.5: ";
    const std::string remedy = "; use ?time=2.5 to take one step alone";
    EXPECT_EQ(after("1.vtm"), start + "has no block \"b\", which step 0 has" + remedy);
    Loader second({}, neverAbort);
    EXPECT_EQ(second.loadFunctions(reference("s.pvd?time=2.5")).size(), 1U);
    EXPECT_EQ(after("renamed.vtm"),
              start + "has a block \"c\", which step 0 does not have" + remedy);
    EXPECT_EQ(after("moved.vtm"), start +
                                      "moved.vtm: block \"b\": other.vti: the grid differs from "
                                      "that of step 0" +
                                      remedy);
    EXPECT_EQ(after("none.vtm"), start + "none.vtm: no such file");
    EXPECT_EQ(after("gap.vtm"), start + "gap.vtm: block \"b\": gone.vti: no such file");
    EXPECT_EQ(firstValues("s.pvd?time=1"), (std::vector<double>{1, 2}));
    EXPECT_EQ(loader().inspect(reference("s.pvd")).blocks.size(), 2U);
    EXPECT_EQ(warnings(),
              std::vector<std::string>{start + "gap.vtm: block \"b\": gone.vti: no such file"});
}

TEST_F(Blocks, AreNoSingleFunctionOrGrid)
{
    create("sub/a.vti", row(0, 1));
    create("m.vtm", blocks({{"a", "sub/a.vti"}, {"b", "sub/a.vti"}}));
    create("one.vtm", blocks({{"a", ""}, {"b", "sub/a.vti"}}));
    EXPECT_EQ(
        usageErrorOf("m.vtm"),
        "m.vtm: has 2 blocks, and one function is wanted; choose one with ?block=: \"a\", \"b\"");
    EXPECT_EQ(withoutFolder(errorOf<usage_error>([&] { loader().loadGrid(reference("m.vtm")); })),
              "m.vtm: has 2 blocks, and one grid is wanted; choose one with ?block=: \"a\", \"b\"");
    EXPECT_EQ(loadValues<Scalar>("one.vtm#p").size(), 6U);
    EXPECT_EQ(loader().loadGrid(reference("one.vtm")), loader().loadGrid(reference("sub/a.vti")));
    EXPECT_EQ(loader().inspect(reference("one.vtm")).format, "VTK XML image data");
}

TEST_F(Blocks, AreRefusedWhereTheListIsNone)
{
    create("a.vti", row(0, 1));
    create("self.vtm", blocks({{"a", "a.vti"}, {"me", "self.vtm"}}));
    create("list.vtm", blocks({{"a", "list.pvd"}}));
    create("list.pvd", pvd({{"0", "0", "list.vtm"}}));
    create("missing.vtm", blocks({{"a", "a.vti"}, {"b", "sub/b.vti"}}));
    create("broken.vtm", blocks({{"a", "a.vti"}, {"b", "cut.vti"}}));
    create("cut.vti", row(0, 1).substr(0, 200));
    create("none.vtm", blockFile("<Block index=\"0\"><DataSet index=\"0\"/></Block>"));
    create("grid.vtm", row(0, 1));
    create("cut.vtm", blocks({{"a", "a.vti"}}).substr(0, 150));
    create(
        "twice.pvd",
        pvd({{"0", "0", "a.vti"}, {"1", "0", "a.vti"}, {"1", "1", "a.vti"}, {"1", "0", "a.vti"}}));
    std::string deep = "<DataSet file=\"a.vti\"/>";
    for (int i = 0; i < 100000; ++i)
        deep.insert(0, "<Block>");
    for (int i = 0; i < 100000; ++i)
        deep += "</Block>";
    create("deep.vtm", blockFile(deep));

    const std::string nested = ", which is a list of files itself";
    EXPECT_EQ(errorFor("self.vtm"), "self.vtm: lists \"self.vtm\"" + nested);
    EXPECT_EQ(errorFor("list.vtm"), "list.vtm: lists \"list.pvd\"" + nested);
    EXPECT_EQ(errorFor("list.pvd"),
              "list.pvd: step 0 at t = 0: list.vtm: lists \"list.pvd\"" + nested);
    EXPECT_EQ(errorFor("missing.vtm"), "missing.vtm: block \"b\": sub/b.vti: no such file");
    EXPECT_TRUE(errorFor("broken.vtm").starts_with("broken.vtm: block \"b\": cut.vti: "));
    EXPECT_EQ(errorFor("none.vtm"), "none.vtm: lists no blocks with a file");
    EXPECT_EQ(errorFor("grid.vtm"), "grid.vtm: not a multi-block file: its root element is not "
                                    "<VTKFile type=\"vtkMultiBlockDataSet\">");
    EXPECT_TRUE(errorFor("cut.vtm").starts_with("cut.vtm: not a whole XML file: "));
    EXPECT_EQ(errorFor("deep.vtm"), "deep.vtm: nests its blocks more than 100 deep");
    EXPECT_EQ(errorFor("twice.pvd"), "twice.pvd: lists several files for t = 1 and part 0; a step "
                                     "must be one file, or one for each part");
}

}
