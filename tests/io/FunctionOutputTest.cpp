#include "WriterSamples.hpp"

#include <tavrin/io/FunctionOutput.hpp>
#include <tavrin/io/Loader.hpp>

namespace
{

using namespace samples;
using io::FunctionOutput;

/// A file that is written step by step.
class FunctionOutputTest : public TemporaryFolderTest
{
protected:
    /// A function whose values are all its first time.
    static std::shared_ptr<const FunctionBase> stepAt(std::vector<double> times,
                                                      std::shared_ptr<const Domain> domain)
    {
        const std::size_t count =
            domain->numElements(PointSetBase::Points) * std::max<std::size_t>(1, times.size());
        std::vector<Scalar> values(count, Scalar{times.empty() ? 0.0 : times.front()});
        return addData(std::move(domain), PointSetBase::Points, std::move(values),
                       Precision::Float64, std::move(times), "f");
    }

    std::string refusalOf(FunctionOutput& output, const FunctionBase& function)
    {
        return withoutFolder(errorOf<usage_error>([&] { output.append(function, "f"); }));
    }

    std::string withoutFolder(const std::string& text) const
    {
        return text.substr(text.find(folder().string()) == 0 ? folder().string().size() + 1 : 0);
    }

    std::shared_ptr<const FunctionBase> load(const std::string& text)
    {
        return mLoader.loadFunction(io::DataReference::parse((folder() / text).string()));
    }

    io::Loader mLoader{{}, neverAbort};
};

TEST_F(FunctionOutputTest, HoldsNoMoreThanTheLastStepAndWritesEachWithItsOwnGrid)
{
    const std::vector<std::shared_ptr<const Domain> (*)()> grids{
        uniformGrid<2>, uniformGrid<2>, rectilinearGrid<3>, pointCloud<2>, uniformGrid<1>};
    FunctionOutput output(folder() / "run.pvd", neverAbort);
    std::weak_ptr<const Domain> earlier;
    for (std::size_t i = 0; i < grids.size(); ++i)
    {
        const auto step = stepAt({0.5 * static_cast<double>(i)}, grids[i]());
        output.append(*step, "f");
        EXPECT_TRUE(earlier.expired());
        earlier = step->domain();
    }
    // Several steps at once.
    output.append(*awkwardFunction(uniformGrid<1>(), PointSetBase::Points, {7.0, 8.0}), "f");
    EXPECT_EQ(listing().size(), 9U) << "the list, a folder and seven steps, under temporary names";
    output.finish()->publish();
    EXPECT_EQ(listing(),
              (std::vector<std::string>{"run.pvd", "run/", "run/run_0000.vti", "run/run_0001.vti",
                                        "run/run_0002.vtr", "run/run_0003.vtu", "run/run_0004.vti",
                                        "run/run_0005.vti", "run/run_0006.vti"}));
    for (std::size_t i = 0; i < grids.size(); ++i)
    {
        const double time = 0.5 * static_cast<double>(i);
        const auto step = load("run.pvd?time=" + std::to_string(time));
        EXPECT_TRUE(step->domain()->equals(*grids[i]()));
        EXPECT_EQ(valuesOf<Scalar>(*step).back()[0], time);
    }
    EXPECT_THROW(static_cast<void>(output.finish()), logic_error);
}

TEST_F(FunctionOutputTest, RefusesStepsThatDoNotFit)
{
    FunctionOutput single(folder() / "one.vti", neverAbort);
    EXPECT_EQ(refusalOf(single, *stepAt({1.0, 2.0}, uniformGrid<1>())).substr(0, 45),
              "one.vti: a function with 2 time steps is writ");
    single.append(*stepAt({1.0}, uniformGrid<1>()), "");
    EXPECT_EQ(refusalOf(single, *stepAt({2.0}, uniformGrid<1>())).substr(0, 45),
              "one.vti: a function with 2 time steps is writ");
    single.finish()->publish();
    EXPECT_EQ(load("one.vti")->name(), "values");

    FunctionOutput series(folder() / "run.pvd", neverAbort);
    EXPECT_THROW(static_cast<void>(series.finish()), logic_error);
    series.append(*stepAt({}, uniformGrid<1>()), "f");
    series.append(*stepAt({3.0}, uniformGrid<1>()), "f");
    EXPECT_EQ(refusalOf(series, *stepAt({3.0}, uniformGrid<1>())),
              "run.pvd: the step at t = 3 does not come after the one at t = 3");
    EXPECT_EQ(refusalOf(series, *stepAt({}, uniformGrid<1>())),
              "run.pvd: the step at t = 0 does not come after the one at t = 3");
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(refusalOf(series, *stepAt({4.0, infinity}, uniformGrid<1>())),
              "run.pvd: values at t = inf are not written, since a time must be finite");
    FunctionOutput endless(folder() / "endless.vti", neverAbort);
    EXPECT_EQ(refusalOf(endless, *stepAt({-infinity}, uniformGrid<1>())),
              "endless.vti: values at t = -inf are not written, since a time must be finite");
    for (const std::string name : {"run", "run.vtm", "run.txt"})
        EXPECT_EQ(errorOf<usage_error>([&] { FunctionOutput(name, neverAbort); }).substr(0, 32),
                  (name + ": data is written as .vti, .vtr, ").substr(0, 32));
}

TEST_F(FunctionOutputTest, LeavesNothingBehindUnlessItIsPublished)
{
    volatile bool abortFlag = false;
    {
        FunctionOutput abandoned(folder() / "run.pvd", abortFlag);
        abandoned.append(*stepAt({0.0}, uniformGrid<1>()), "f");
        const auto finished = FunctionOutput(folder() / "one.vti", abortFlag);
        abortFlag = true;
        EXPECT_THROW(abandoned.append(*stepAt({1.0}, uniformGrid<1>()), "f"), io::Aborted);
    }
    EXPECT_TRUE(listing().empty());

    create("run/run_0001.vti", "of somebody else");
    FunctionOutput output(folder() / "run.pvd", neverAbort);
    output.append(*stepAt({0.0}, uniformGrid<1>()), "f");
    EXPECT_EQ(withoutFolder(errorOf<io::FileError>(
                  [&] { output.append(*stepAt({1.0}, uniformGrid<1>()), "f"); })),
              "run.pvd: " + (folder() / "run/run_0001.vti").string() +
                  " exists and belongs to another data set; remove it or choose another name");
    EXPECT_EQ(contentOf("run/run_0001.vti"), "of somebody else");
}

}
