#include "WriterSamples.hpp"

#include <tavrin/domain/Subdomain.hpp>
#include <tavrin/io/Writer.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkDataSet.h>
#include <vtkFieldData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkXMLGenericDataObjectReader.h>

#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

namespace
{

using namespace samples;
using io::writeFunction;

class Writer : public TemporaryFolderTest
{
protected:
    std::string refusal(const FunctionBase& function, const std::string& file)
    {
        return errorOf<usage_error>([&] { writeFunction(function, "f", file, neverAbort); });
    }
    std::string failure(const FunctionBase& function, const std::filesystem::path& file)
    {
        return errorOf<io::FileError>([&] { writeFunction(function, "f", file, neverAbort); });
    }

    vtkSmartPointer<vtkDataSet> readWithVtk(const std::string& name)
    {
        vtkNew<vtkXMLGenericDataObjectReader> reader;
        reader->SetFileName((folder() / name).c_str());
        reader->Update();
        return vtkDataSet::SafeDownCast(reader->GetOutput());
    }
};

TEST_F(Writer, NamesTheExtensionsThatSuit)
{
    const auto scalar = [](std::shared_ptr<const Domain> domain)
    { return awkwardFunction(std::move(domain)); };
    EXPECT_EQ(refusal(*scalar(uniformGrid<2>()), "out/f.vtr"),
              "out/f.vtr: a uniform grid is written as .vti, .vts, .vtu, .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(rectilinearGrid<2>()), "f.vti"),
              "f.vti: a rectilinear grid is written as .vtr, .vts, .vtu, .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(curvilinearGrid<2>()), "speed.vti"),
              "speed.vti: a curvilinear grid is written as .vts, .vtu, .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(oneCellOfEach<3>({CellType::Tetrahedra})), "f.vtp"),
              "f.vtp: an unstructured grid is written as .vtu, .pvd or .csv");
    // In a .vtp file lines come before triangles, whatever the order of the cells was.
    EXPECT_EQ(refusal(*scalar(oneCellOfEach<3>({CellType::Triangles, CellType::Lines})), "f.vtp"),
              "f.vtp: an unstructured grid is written as .vtu, .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(oneCellOfEach<3>({CellType::Lines, CellType::Triangles})), "f.vti"),
              "f.vti: an unstructured grid is written as .vtu, .vtp, .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(pointCloud<3>()), "f"),
              "f: a point cloud is written as .vtu, .vtp, .pvd or .csv");
    EXPECT_EQ(
        refusal(*awkwardFunction(uniformGrid<1>(), PointSetBase::Points, {1.0, 2.0}), "f.vti"),
        "f.vti: a function with 2 time steps is written as .pvd or .csv");
    EXPECT_EQ(refusal(*scalar(std::make_shared<Subdomain>(uniformGrid<1>(), PointSetBase::Points,
                                                          std::vector<std::size_t>{})),
                      "f.vti"),
              "f.vti: values on this kind of domain are not written");
}

TEST_F(Writer, WritesWhatVtkReadsAsItsOwn)
{
    const std::string name = "a<b> & \"\xc3\xbc\" [m/s]";
    const auto stress = awkwardFunction<Matrix3>(uniformGrid<3>(), detail::Cells, {0.1});
    writeFunction(*stress, name, folder() / "a.vti", neverAbort);
    const auto image = readWithVtk("a.vti");
    ASSERT_NE(image, nullptr);
    EXPECT_STREQ(image->GetClassName(), "vtkImageData");
    ASSERT_NE(image->GetCellData()->GetTensors(), nullptr);
    EXPECT_EQ(image->GetCellData()->GetTensors()->GetName(), name);
    EXPECT_STREQ(image->GetCellData()->GetTensors()->GetComponentName(5), "yz");
    EXPECT_EQ(image->GetFieldData()->GetArray("TimeValue")->GetTuple1(0), 0.1);

    writeFunction(*awkwardFunction<Vector3>(oneCellOfEach<2>({CellType::Lines, CellType::Quads})),
                  "f", folder() / "f.vtp", neverAbort);
    const auto poly = readWithVtk("f.vtp");
    ASSERT_NE(poly, nullptr);
    EXPECT_EQ(poly->GetCellType(1), VTK_QUAD);
    EXPECT_NE(poly->GetPointData()->GetVectors(), nullptr);
    EXPECT_EQ(poly->GetPoint(7)[2], 0.0);
    EXPECT_EQ(poly->GetFieldData()->GetArray("TimeValue"), nullptr);

    writeFunction(*awkwardFunction(oneCellOfEach<3>({CellType::SubparametricQuadraticTriangle,
                                                     CellType::Invalid, CellType::Prisms})),
                  "f", folder() / "f.vtu", neverAbort);
    const auto mesh = readWithVtk("f.vtu");
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetCellType(0), VTK_QUADRATIC_TRIANGLE);
    EXPECT_EQ(mesh->GetCellType(1), VTK_EMPTY_CELL);
    EXPECT_EQ(mesh->GetCellType(2), VTK_WEDGE);
    EXPECT_NE(mesh->GetPointData()->GetScalars(), nullptr);
}

/// Which of both zeros VTK finds first depends on its threads.
TEST_F(Writer, WritesTheSameBoundOfEitherZero)
{
    for (const double zero : {0.0, -0.0})
    {
        writeFunction(*fieldOf<Scalar>({{zero}, {zero}, {1.0}}), "f", folder() / "f.vti",
                      neverAbort);
        const std::string content = contentOf("f.vti");
        EXPECT_NE(content.find("RangeMin=\"0\""), std::string::npos) << content.substr(0, 500);
    }
}

TEST_F(Writer, LeavesAnExistingFileAloneWhenItFails)
{
    const auto function = awkwardFunction<Vector3>(std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {30, 30, 30}, .origin = {}, .spacing = {1.0, 1.0, 1.0}}));
    create("f.vti", "precious");

    // A disk quota looks like this limit, and it needs no rights to set up.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const rlim_t limit : {0, 100, 300'000})
    {
        rlimit small = before;
        small.rlim_cur = limit;
        setrlimit(RLIMIT_FSIZE, &small);
        EXPECT_EQ(failure(*function, folder() / "f.vti"),
                  (folder() / "f.vti").string() + ": File too large");
        setrlimit(RLIMIT_FSIZE, &before);
    }
    EXPECT_EQ(errorOf<io::Aborted>(
                  [&] { writeFunction(*function, "f", folder() / "f.vti", alreadyAborted); }),
              "aborted");
    EXPECT_EQ(contentOf("f.vti"), "precious");
    EXPECT_EQ(listing(), std::vector<std::string>{"f.vti"});
}

TEST_F(Writer, SaysWhyAFileCannotBeWritten)
{
    const auto function = awkwardFunction(uniformGrid<1>());
    const std::string missing = (folder() / "out").string();
    EXPECT_EQ(failure(*function, missing + "/f.vti"),
              missing + "/f.vti: the folder " + missing + " does not exist");
    EXPECT_EQ(failure(*function, missing + "/f.pvd"),
              missing + "/f.pvd: the folder " + missing + " does not exist");
    create("out", "a file");
    EXPECT_EQ(failure(*function, missing + "/f.vti"),
              missing + "/f.vti: " + missing + " is not a folder");
    create("f.vti/x", "");
    EXPECT_EQ(failure(*function, folder() / "f.vti"),
              (folder() / "f.vti").string() + ": is a folder");
}

TEST_F(Writer, RespectsAProtectedFile)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    create("protected.vti", "precious");
    std::filesystem::permissions(folder() / "protected.vti", std::filesystem::perms::owner_read);
    EXPECT_EQ(failure(*awkwardFunction(uniformGrid<1>()), folder() / "protected.vti"),
              (folder() / "protected.vti").string() + ": Permission denied");
}

TEST_F(Writer, KeepsThePermissionsOfAReplacedFile)
{
    using std::filesystem::perms;
    const perms secret = perms::owner_read | perms::owner_write;
    const perms shared = secret | perms::group_read | perms::group_write;
    for (const perms permissions : {secret, shared})
    {
        create("f.vti", "old");
        std::filesystem::permissions(folder() / "f.vti", permissions);
        writeFunction(*awkwardFunction(uniformGrid<1>()), "f", folder() / "f.vti", neverAbort);
        EXPECT_NE(contentOf("f.vti"), "old");
        EXPECT_EQ(std::filesystem::status(folder() / "f.vti").permissions(), permissions);
    }
}

TEST_F(Writer, NeedsNoSecondCopyOfAStructuredResult)
{
    constexpr std::size_t side = 160;
    const auto function = addData(
        std::make_shared<UniformGrid<3>>(UniformGrid<3>::Layout{
            .size = {side, side, side}, .origin = {}, .spacing = {1.0, 1.0, 1.0}}),
        PointSetBase::Points, std::vector<Vector3>(side * side * side, Vector3(1.0, 2.0, 3.0)),
        Precision::Float64, {});
    const auto peakInKilobytes = []
    {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    const long before = peakInKilobytes();
    writeFunction(*function, "f", folder() / "f.vti", neverAbort);
    // A fifth of the values: sanitizers need some memory of their own.
    EXPECT_LT(peakInKilobytes() - before, 19 * 1024);
    EXPECT_GT(std::filesystem::file_size(folder() / "f.vti"), side * side * side * 24);
}

/// Series of one scalar on a 1-D grid.
class SeriesWriter : public Writer
{
protected:
    static std::shared_ptr<const FunctionBase> series(const std::vector<double>& times)
    {
        return awkwardFunction(uniformGrid<1>(), PointSetBase::Points, times);
    }
    void write(const std::vector<double>& times)
    {
        writeFunction(*series(times), "f", folder() / "run.pvd", neverAbort);
    }
    const std::vector<std::string> twoSteps{"run.pvd", "run/", "run/run_0000.vti",
                                            "run/run_0001.vti"};
};

TEST_F(SeriesWriter, ListsItsStepsWithExactTimes)
{
    write({-0.1, 1e17 / 3.0});
    EXPECT_EQ(listing(), twoSteps);
    EXPECT_EQ(
        contentOf("run.pvd"),
        "<?xml version=\"1.0\"?>\n"
        "<VTKFile type=\"Collection\" version=\"0.1\">\n"
        "  <Collection>\n"
        "    <DataSet timestep=\"-0.1\" part=\"0\" file=\"run/run_0000.vti\" />\n"
        "    <DataSet timestep=\"33333333333333332\" part=\"0\" file=\"run/run_0001.vti\" />\n"
        "  </Collection>\n"
        "</VTKFile>\n");
}

TEST_F(SeriesWriter, ReplacesAnEarlierSeriesAsAWhole)
{
    write({1.0, 2.0, 3.0});
    write({4.0, 5.0});
    EXPECT_EQ(listing(), twoSteps);
    EXPECT_EQ(readWithVtk("run/run_0001.vti")->GetFieldData()->GetArray(0)->GetTuple1(0), 5.0);
}

TEST_F(SeriesWriter, KeepsThePermissionsOfItsFolder)
{
    write({1.0});
    std::filesystem::permissions(folder() / "run", std::filesystem::perms::owner_all);
    write({2.0});
    EXPECT_EQ(std::filesystem::status(folder() / "run").permissions(),
              std::filesystem::perms::owner_all);
}

TEST_F(SeriesWriter, KeepsTheFilesOfOthers)
{
    write({1.0, 2.0, 3.0});
    create("run/notes.txt", "precious");
    create("run/run_0009.vti", "listed by no .pvd file");
    write({4.0, 5.0});
    EXPECT_EQ(listing(),
              (std::vector<std::string>{"run.pvd", "run/", "run/notes.txt", "run/run_0000.vti",
                                        "run/run_0001.vti", "run/run_0009.vti"}));
    EXPECT_EQ(readWithVtk("run/run_0000.vti")->GetFieldData()->GetArray(0)->GetTuple1(0), 4.0);

    create("other/other_0001.vti", "precious");
    const std::string file = (folder() / "other").string();
    const std::vector<std::string> before = listing();
    EXPECT_EQ(failure(*series({1.0, 2.0}), file + ".pvd"),
              file + ".pvd: " + file +
                  "/other_0001.vti exists and belongs to another data set; "
                  "remove it or choose another name");
    EXPECT_EQ(listing(), before);
}

TEST_F(SeriesWriter, LoadsOneStepAtATimeAndLeavesNothingWhenOneFails)
{
    write({1.0, 2.0});
    const std::string before = contentOf("run.pvd") + contentOf("run/run_0001.vti");
    const auto lazy = [](std::size_t lastGoodStep)
    {
        const auto load = [=](std::size_t step)
        {
            if (step > lastGoodStep)
                throw io::FileError("in.pvd", "the disk is gone");
            return std::make_shared<const DefaultValueArray<Scalar>>(
                std::vector<Scalar>(2, static_cast<double>(step)), Precision::Float64);
        };
        return Function<Scalar>(
            uniformGrid<1>(), PointSetBase::Points,
            std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, 3, 2, load),
            {1.0, 2.0, 3.0});
    };
    EXPECT_EQ(failure(lazy(1), folder() / "run.pvd"), "in.pvd: the disk is gone");
    EXPECT_EQ(contentOf("run.pvd") + contentOf("run/run_0001.vti"), before);
    EXPECT_EQ(listing(), twoSteps);

    writeFunction(lazy(2), "f", folder() / "run.pvd", neverAbort);
    EXPECT_EQ(readWithVtk("run/run_0002.vti")->GetPointData()->GetScalars()->GetTuple1(1), 2.0);
}

}
