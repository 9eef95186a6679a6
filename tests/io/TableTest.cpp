#include "ReaderSamples.hpp"

#include <tavrin/domain/elementPosition.hpp>
#include <tavrin/io/FunctionOutput.hpp>
#include <tavrin/io/Writer.hpp>

#include <bit>

namespace
{

using namespace samples;

/// Tables of numbers, written and read.
class Table : public ReaderTest
{
protected:
    void write(const FunctionBase& function, const std::string& name)
    {
        writeFunction(function, name, folder() / "t.csv", neverAbort);
    }

    /// What is wrong with a table.
    std::string complaint(const std::string& content)
    {
        create("bad.csv", content);
        return complaintAbout("bad.csv");
    }

    static std::vector<double> numbersOf(const FunctionBase& function)
    {
        std::vector<double> numbers;
        visitFunction<ValueTypes>(function,
                                  [&]<typename T>(const Function<T>&)
                                  {
                                      for (const T& value : valuesOf<T>(function))
                                          numbers.insert(numbers.end(), value.begin(), value.end());
                                  });
        return numbers;
    }

    template<typename T>
    void comesBack(std::shared_ptr<const Domain> domain, const std::string& name,
                   std::vector<double> times = {}, bool hasMask = false)
    {
        const std::size_t count =
            domain->numElements(PointSetBase::Points) * std::max<std::size_t>(1, times.size());
        std::shared_ptr<ValidityMask> mask;
        if (hasMask)
        {
            mask = std::make_shared<ValidityMask>(count, std::uint8_t{1});
            (*mask)[count / 2] = 0;
        }
        const auto function = std::make_shared<const Function<T>>(
            domain, PointSetBase::Points, stored(awkwardValues<T>(count)), times, name, mask);
        write(*function, name);
        SCOPED_TRACE(name + " " + function->valueTypeName() + ": " +
                     contentOf("t.csv").substr(0, 80));
        Loader other({}, neverAbort);
        const auto read = other.loadFunction(reference("t.csv"));
        EXPECT_EQ(read->name(), name);
        EXPECT_EQ(read->valueTypeName(), function->valueTypeName());
        EXPECT_EQ(read->timeSteps(), times);
        ASSERT_EQ(read->validity() != nullptr, hasMask);
        if (hasMask)
        {
            EXPECT_EQ(*read->validity(), *mask);
        }
        const auto same = [](double a, double b)
        { return (a != a && b != b) || std::bit_cast<long>(a) == std::bit_cast<long>(b); };
        EXPECT_TRUE(std::ranges::equal(numbersOf(*read), numbersOf(*function), same));
        for (std::size_t i = 0; i < domain->numElements(PointSetBase::Points); ++i)
            EXPECT_EQ(elementPosition(*read->domain(), PointSetBase::Points, i),
                      elementPosition(*domain, PointSetBase::Points, i));
    }
};

TEST_F(Table, IsReadAsItWasWritten)
{
    comesBack<Scalar>(pointCloud<1>(), "p");
    comesBack<Scalar>(pointCloud<3>(), "p", {1e-3, 0.1, 1.0 / 3.0}, true);
    comesBack<Scalar>(uniformGrid<3>(), "p", {7.0});
    comesBack<Vector1>(rectilinearGrid<2>(), "v");
    comesBack<Vector2>(pointCloud<2>(), "v", {}, true);
    comesBack<Vector3>(curvilinearGrid<3>(), "v", {0.0, 2.0});
    comesBack<Vector4>(pointCloud<3>(), "v");
    comesBack<Matrix1>(pointCloud<3>(), "m");
    comesBack<Matrix2>(pointCloud<2>(), "m");
    comesBack<Matrix3>(pointCloud<3>(), "m", {-1.0, 1.0}, true);
    comesBack<Matrix4>(pointCloud<3>(), "m");
    comesBack<Vector242>(pointCloud<3>(), "w");
    comesBack<Vector375>(pointCloud<1>(), "w", {1.0, 2.0}, true);
    // Names that have a meaning in tables, or in texts with commas and quotes.
    for (const std::string name :
         {"x", "Y (m)", "z", "time", "valid", "a,b", "say \"hi\"", " blank ", "a;b", "#1",
          "velocity_x", "T_0", "Points:0_", "\xc3\xbc [m/s]"})
        for (const bool hasMask : {false, true})
            for (const std::vector<double>& times : {std::vector<double>{}, {1.0, 2.0}})
                comesBack<Scalar>(pointCloud<2>(), name, times, hasMask);
    comesBack<Scalar>(pointCloud<1>(), "y");
    comesBack<Vector2>(pointCloud<2>(), "points");
}

TEST_F(Table, HasOneRowPerValueWithTheCentersOfCells)
{
    const auto grid = std::make_shared<UniformGrid<2>>(
        UniformGrid<2>::Layout{.size = {3, 2, 1}, .origin = {0, 0}, .spacing = {1, 2}});
    const auto mask = std::make_shared<ValidityMask>(4, std::uint8_t{1});
    (*mask)[1] = 0;
    write(Function<Vector2>(grid, detail::Cells,
                            stored(std::vector<Vector2>{{1, 2}, {0.1, 1e300}, {3, 4}, {-0.0, 5}}),
                            {0, 0.5}, "v", mask),
          "v");
    EXPECT_EQ(contentOf("t.csv"), "time,x,y,v_x,v_y,valid\n"
                                  "0,0.5,1,1,2,1\n"
                                  "0,1.5,1,0.1,1e+300,0\n"
                                  "0.5,0.5,1,3,4,1\n"
                                  "0.5,1.5,1,-0,5,1\n");
}

TEST_F(Table, TakesStepsOneByOneEvenIfOnlyTheLaterOnesHaveAMask)
{
    const auto step = [](double time, bool hasMask)
    {
        auto mask = std::make_shared<ValidityMask>(2, std::uint8_t{1});
        mask->back() = 0;
        return Function<Scalar>(uniformGrid<1>(), PointSetBase::Points,
                                stored(std::vector<Scalar>{{time}, {2 * time}}), {time}, "p",
                                hasMask ? mask : nullptr);
    };
    FunctionOutput output(folder() / "t.csv", neverAbort);
    output.append(step(1, false), "p");
    output.append(step(2, true), "p");
    output.append(step(3, false), "p");
    EXPECT_EQ(
        withoutFolder(errorOf<usage_error>([&] { output.append(step(4, false), "q"); })),
        "t.csv: a table has one header; the columns time,x,q differ from time,x,p of the steps "
        "before");
    output.finish()->publish();
    const auto read = load("t.csv");
    EXPECT_EQ(read->timeSteps(), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(*read->validity(), (ValidityMask{1, 1, 1, 0, 1, 1}));
    EXPECT_EQ(listing(), std::vector<std::string>{"t.csv"});
}

TEST_F(Table, MayComeFromOtherPrograms)
{
    create("paraview.csv", "\xEF\xBB\xBF\"U:0\",\"U:1\",\"U:2\",\"p\",\"Points:0\",\"Points:1\","
                           "\"Points:2\"\r\n1,2,3,-4.5e-3,0,0,1\r\n4,5,6,,1,0,1\r\n");
    EXPECT_EQ(loadValues<Vector3>("paraview.csv#U"), (std::vector<Vector3>{{1, 2, 3}, {4, 5, 6}}));
    EXPECT_EQ(loadValues<Scalar>("paraview.csv#p")[0], Scalar{-0.0045});
    EXPECT_TRUE(std::isnan(loadValues<Scalar>("paraview.csv#p")[1][0]));
    EXPECT_EQ(elementPosition(*load("paraview.csv#p")->domain(), PointSetBase::Points, 1),
              (std::vector<double>{1, 0, 1}));

    create("probe.csv",
           "# measured\n\nTime; X (m); Y (m); u_y (m/s); u_x (m/s); T_1\n"
           " 2;0;1; 20;10;5\n# a pause\n1;0;1;\"4\";3;5\n\n2;1;1;21;11;5\n1;1;1;8;7;5");
    const auto velocity = load("probe.csv#u (m/s)");
    EXPECT_EQ(velocity->timeSteps(), (std::vector<double>{1, 2}));
    EXPECT_EQ(valuesOf<Vector2>(*velocity),
              (std::vector<Vector2>{{3, 4}, {7, 8}, {10, 20}, {11, 21}}));
    EXPECT_EQ(loadValues<Vector2>("probe.csv#u (m/s)?time=2"),
              (std::vector<Vector2>{{10, 20}, {11, 21}}));
    EXPECT_EQ(loader().timesOf(reference("probe.csv")), (std::vector<double>{1, 2}));
    EXPECT_EQ(loader().inspect(reference("probe.csv")).timeSteps, (std::vector<double>{1, 2}));
    EXPECT_EQ(load("probe.csv#T_1")->valueTypeName(), "Scalar");
    EXPECT_EQ(load("probe.csv#u (m/s)?component=y")->name(), "u (m/s) y");

    create("savetxt.csv", "# x\ty\ts_xx\ts_yy\ts_zz\ts_yz\ts_xz\ts_xy\n0\t0\t1\t2\t3\t4\t5\t6\n");
    EXPECT_EQ(loadValues<Matrix3>("savetxt.csv#s")[0], (Matrix3{1, 6, 5, 6, 2, 4, 5, 4, 3}));

    // Each step may have points of its own.
    create("moving.csv", "time,x,p\n0,1,1\n1,2,2\n1,3,3\n");
    EXPECT_EQ(loadValues<Scalar>("moving.csv?time=1"), (std::vector<Scalar>{{2}, {3}}));
    EXPECT_EQ(
        withoutFolder(errorOf<FileError>([&] { load("moving.csv"); })),
        "moving.csv: step 1 at t = 1: the grid differs from that of step 0; use ?time=1 to take "
        "one step alone");
    EXPECT_EQ(usageErrorOf("moving.csv?time=0.7"),
              "moving.csv: no step at t = 0.7; there are steps at 0, 1; the nearest is at 1");
}

TEST_F(Table, SaysWhereItIsWrong)
{
    EXPECT_EQ(
        complaint("a,b\n1,2\n"),
        "bad.csv: has no coordinates: a column x, X (m) or Points:0 is needed; its columns are "
        "\"a\", \"b\"");
    EXPECT_EQ(complaint("x,p\n1,2\n\n# fine\n3,4,\n"),
              "bad.csv: line 5: has more fields than the 2 in the header");
    EXPECT_EQ(complaint("x,p,q\n1,2\n"), "bad.csv: line 2: has 2 fields, not 3");
    EXPECT_EQ(complaint("x,\"p\nq\"\n1,2\n3,4 m\n"),
              "bad.csv: line 4: column 2, \"p q\": \"4 m\" is not a number");
    EXPECT_EQ(complaint("x;p\n1;2,5\n"),
              "bad.csv: line 2: column 2, \"p\": \"2,5\" is not a number");
    EXPECT_EQ(
        complaint("1,2\n3,4\n"),
        "bad.csv: line 1 holds numbers; a header line with the names of the columns is missing");
    EXPECT_EQ(complaint("# nothing\n\n"), "bad.csv: holds no table");
    EXPECT_EQ(complaint("time,x,p\nnan,1,1\n"), "bad.csv: row 1 has no finite time");
    EXPECT_EQ(complaint("x,p\n,1\n"), "bad.csv: 1 point has coordinates that are not finite");
    EXPECT_EQ(complaint("x,p\n"), "ok");
    // The first error is told, whichever thread finds one first.
    std::string many = "x,p\n";
    for (int i = 0; i < 600'000; ++i)
        many += i == 200'000 || i == 599'000 ? "1,?\n" : "1,2\n";
    EXPECT_EQ(complaint(many), "bad.csv: line 200002: column 2, \"p\": \"?\" is not a number");

    create("run.pvd",
           vtkFile("Collection", "<Collection><DataSet timestep=\"0\" file=\"steps.csv\"/>"
                                 "</Collection>"));
    create("steps.csv", "time,x,p\n0,1,2\n1,1,2\n");
    EXPECT_EQ(
        complaintAbout("run.pvd"),
        "run.pvd: step 0 at t = 0: steps.csv: holds several time steps and cannot be one file of "
        "a list");
}

}
