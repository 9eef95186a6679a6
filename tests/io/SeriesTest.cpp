#include "ReaderSamples.hpp"

#include <tavrin/value/LexicalCast.hpp>

#include <sys/inotify.h>
#include <unistd.h>

namespace
{

using namespace samples;

class Series : public ReaderTest
{
protected:
    static std::string step(const std::string& value, const std::string& lastPoint = "0 1 0")
    {
        return gridFile(3, "0 0 0  1 0 0  " + lastPoint, 1, "0 1 2", "3", "5",
                        "<CellData>" + dataArray("type=\"Float64\" Name=\"c\"", value) +
                            "</CellData>");
    }

    static std::string pvd(const std::vector<std::pair<std::string, std::string>>& steps)
    {
        std::string sets;
        for (const auto& [time, file] : steps)
            sets += "<DataSet timestep=\"" + time + "\" part=\"0\" file=\"" + file + "\"/>\n";
        return vtkFile("Collection", "<Collection>" + sets + "</Collection>");
    }

    std::string fileErrorOf(const std::string& text)
    {
        return withoutFolder(errorOf<FileError>([&] { load(text); }));
    }
};

TEST_F(Series, IsOneFunctionWhoseStepsAreLoadedWhenRead)
{
    create("steps/a.vtu", step("1"));
    create("steps/b.vtu", step("2"));
    create("steps/c.vtu", step("3"));
    // Not in the order of time.
    create("s.pvd", pvd({{"10", "steps/c.vtu"}, {"0", "steps/a.vtu"}, {"2.5", "steps/b.vtu"}}));
    create("s.vtu.series", R"({"file-series-version": "1.0", "files": [
        {"name": "steps/c.vtu", "time": 10}, {"name": "steps/a.vtu", "time": 0},
        {"name": "steps/b.vtu", "time": 2.5}]})");
    for (const std::string name : {"s.pvd", "s.vtu.series"})
    {
        const auto function = load(name + "#c");
        EXPECT_EQ(function->timeSteps(), (std::vector<double>{0.0, 2.5, 10.0}));
        EXPECT_FALSE(function->values()->isInMemory());
        EXPECT_EQ(valuesOf<Scalar>(*function), (std::vector<Scalar>{{1.0}, {2.0}, {3.0}}));
        const auto single = load(name + "?time=2.5000000001");
        EXPECT_EQ(single->timeSteps(), std::vector<double>{2.5});
        EXPECT_EQ(valuesOf<Scalar>(*single), std::vector<Scalar>{{2.0}});
        EXPECT_EQ(single->domain(), function->domain());
        const FileInfo info = loader().inspect(reference(name));
        EXPECT_EQ(info.format, "time series of 3 files");
        EXPECT_EQ(info.timeSteps, function->timeSteps());
    }
    create("close.pvd", pvd({{"1", "steps/a.vtu"}, {"1.0000000005", "steps/b.vtu"}}));
    EXPECT_EQ(loadValues<Scalar>("close.pvd?time=1.0000000005"), std::vector<Scalar>{{2.0}});
    EXPECT_EQ(usageErrorOf("s.pvd?time=3"),
              "s.pvd: no step at t = 3; there are steps at 0, 2.5, 10; the nearest is at 2.5");
    EXPECT_EQ(usageErrorOf("s.pvd#d"), "s.pvd: no array \"d\"; there is \"c\"");
}

/// Counts how often the files in a folder are opened.
class OpenCounter
{
public:
    explicit OpenCounter(const std::filesystem::path& folder)
        : mDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
          mIsWatching(inotify_add_watch(mDescriptor, folder.c_str(), IN_OPEN) >= 0)
    {
    }
    OpenCounter(const OpenCounter&) = delete;
    OpenCounter& operator=(const OpenCounter&) = delete;
    ~OpenCounter() { close(mDescriptor); }

    bool isWatching() const { return mIsWatching; }

    /// The files that were opened since the last call, each as often as it was opened.
    std::vector<std::string> take()
    {
        std::vector<std::string> names;
        alignas(inotify_event) std::array<char, 4096> buffer{};
        for (ssize_t count; (count = read(mDescriptor, buffer.data(), buffer.size())) > 0;)
            for (const char* at = buffer.data(); at < buffer.data() + count;)
            {
                const auto& event = *reinterpret_cast<const inotify_event*>(at);
                names.emplace_back(event.len > 0 ? event.name : "");
                at += sizeof(inotify_event) + event.len;
            }
        return names;
    }

private:
    int mDescriptor;
    bool mIsWatching;
};

TEST_F(Series, OpensOnlyTheFileOfTheStepThatIsAskedForAndKeepsNoOther)
{
    const std::vector<std::string> files{"a.vtu", "b.vtu", "c.vtu", "d.vtu", "e.vtu"};
    std::vector<std::pair<std::string, std::string>> listed;
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        create(files[i], step(std::to_string(i), i == 2 ? "0 2 0" : "0 1 0"));
        // Long enough ago for the loader to keep the file open.
        std::filesystem::last_write_time(folder() / files[i],
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::hours(1));
        listed.emplace_back(std::to_string(0.1 * static_cast<double>(i)), files[i]);
    }
    create("s.pvd", pvd(listed));
    OpenCounter opened(folder());
    if (!opened.isWatching())
        GTEST_SKIP() << "the system does not tell which files are opened";

    const std::vector<double> times = loader().timesOf(reference("s.pvd"));
    EXPECT_EQ(times, (std::vector<double>{0.0, 0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(opened.take(), std::vector<std::string>{"s.pvd"});
    EXPECT_EQ(loader().timesOf(reference("s.pvd?time=0.2")), std::vector<double>{0.2});
    EXPECT_TRUE(loader().timesOf(reference("a.vtu")).empty());
    EXPECT_EQ(opened.take(), std::vector<std::string>{"a.vtu"});

    std::weak_ptr<const Domain> earlier;
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        DataReference one = reference("s.pvd#c");
        one.time = times[i];
        const auto function = loader().loadFunction(one);
        EXPECT_EQ(loader().loadGrid(reference("s.pvd?time=" + toText(times[i]))),
                  function->domain());
        EXPECT_EQ(function->timeSteps(), std::vector<double>{times[i]});
        EXPECT_EQ(valuesOf<Scalar>(*function)[0][0], static_cast<double>(i));
        // The first file is still open.
        EXPECT_EQ(opened.take(), i == 0 ? std::vector<std::string>{} : std::vector{files[i]});
        const bool hasGridOfTheStepBefore = i == 1 || i == 4;
        EXPECT_EQ(earlier.lock() == function->domain(), hasGridOfTheStepBefore);
        EXPECT_EQ(earlier.expired(), !hasGridOfTheStepBefore);
        earlier = function->domain();
    }
}

TEST_F(Series, OutlivesItsLoader)
{
    create("a.vtu", step("1"));
    create("b.vtu", step("2"));
    create("s.pvd", pvd({{"0", "a.vtu"}, {"1", "b.vtu"}}));
    std::shared_ptr<const FunctionBase> function;
    {
        Loader other({}, neverAbort);
        function = other.loadFunction(reference("s.pvd"));
    }
    EXPECT_EQ(valuesOf<Scalar>(*function), (std::vector<Scalar>{{1.0}, {2.0}}));
}

TEST_F(Series, NamesTheStepThatIsMissingOrDiffers)
{
    create("a.vtu", step("1"));
    create("b.vtu", step("2", "0 2 0"));
    create("more.vtu",
           gridFile(4, "0 0 0 1 0 0 0 1 0 1 1 0", 1, "0 1 2", "3", "5",
                    "<CellData>" + dataArray("type=\"Float64\" Name=\"c\"", "1") + "</CellData>"));
    create("other.vtu", gridFile(3, "0 0 0 1 0 0 0 1 0", 1, "0 1 2", "3", "5"));
    create("missing.pvd", pvd({{"0", "a.vtu"}, {"10", "x/missing.vtu"}}));
    create("points.pvd", pvd({{"0", "a.vtu"}, {"1", "a.vtu"}, {"2", "more.vtu"}}));
    create("array.pvd", pvd({{"0", "a.vtu"}, {"1", "other.vtu"}}));
    create("moved.pvd", pvd({{"0", "a.vtu"}, {"1e-3", "b.vtu"}}));
    EXPECT_EQ(fileErrorOf("missing.pvd"),
              "missing.pvd: step 1 at t = 10: x/missing.vtu: no such file");
    EXPECT_EQ(fileErrorOf("points.pvd"),
              "points.pvd: step 2 at t = 2: more.vtu: the grid differs from that of "
              "step 0; use ?time=2 to take one step alone");
    EXPECT_EQ(fileErrorOf("array.pvd"),
              "array.pvd: step 1 at t = 1: other.vtu: no array \"c\" on cells");
    EXPECT_EQ(loadValues<Scalar>("points.pvd?time=2"), std::vector<Scalar>{{1.0}});

    // Where only the coordinates differ it shows when the step is loaded.
    const auto moved = load("moved.pvd");
    EXPECT_EQ(withoutFolder(errorOf<FileError>([&] { valuesOf<Scalar>(*moved); })),
              "moved.pvd: step 1 at t = 0.001: b.vtu: the grid differs from that of step 0; use "
              "?time=0.001 to take one step alone");

    loader().inspect(reference("missing.pvd"));
    EXPECT_EQ(warnings(), std::vector<std::string>{
                              "missing.pvd: step 1 at t = 10: x/missing.vtu: no such file"});
}

TEST_F(Series, WarnsOnceAboutManyMissingSteps)
{
    create("a.vtu", step("1"));
    std::vector<std::pair<std::string, std::string>> steps{{"0", "a.vtu"}};
    for (int i = 1; i < 100; ++i)
        steps.emplace_back(std::to_string(i) + "e-3", "gone" + std::to_string(i) + ".vtu");
    create("s.pvd", pvd(steps));
    loader().inspect(reference("s.pvd"));
    EXPECT_EQ(warnings(),
              std::vector<std::string>{
                  "s.pvd: step 1 at t = 0.001: gone1.vtu: no such file (and 98 more like this)"});
    EXPECT_EQ(
        usageErrorOf("s.pvd?time=0.0021"),
        "s.pvd: no step at t = 0.0021; there are steps at 0, 0.001, 0.002, 0.003, 0.004, ..., "
        "0.095, 0.096, 0.097, 0.098, 0.099; the nearest is at 0.002");
}

TEST_F(Series, WarnsWhenAStepIsLoaded)
{
    create("a.vtu", step("1"));
    std::string longCell = step("2");
    longCell.replace(longCell.find(">0 1 2<"), 7, ">0 1 2 0<");
    longCell.replace(longCell.find(">3</DataArray>"), 2, ">4");
    create("b.vtu", longCell);
    create("s.pvd", pvd({{"0", "a.vtu"}, {"1", "b.vtu"}}));
    const auto function = load("s.pvd");
    EXPECT_TRUE(warnings().empty());
    EXPECT_EQ(valuesOf<Scalar>(*function), (std::vector<Scalar>{{1.0}, {2.0}}));
    EXPECT_EQ(warnings(), std::vector<std::string>{"s.pvd: 1 cell lists more points than its type "
                                                   "has; only the first are used"});
}

TEST_F(Series, RefusesListsThatAreNone)
{
    create("a.vtu", step("1"));
    create("twice.pvd", pvd({{"0", "a.vtu"}, {"10", "a.vtu"}, {"10.0", "a.vtu"}}));
    create("empty.pvd", pvd({}));
    create("time.pvd", pvd({{"soon", "a.vtu"}}));
    create("nan.pvd", pvd({{"nan", "a.vtu"}}));
    create("nested.pvd", pvd({{"0", "twice.pvd"}}));
    create("grid.pvd", step("1"));
    create("cut.pvd", pvd({{"0", "a.vtu"}}).substr(0, 60));
    create("cut.series", R"({"files": [{"name": "a.vtu", "time")");
    create("odd.series", R"({"files": [{"name": "a.vtu", "time": 0}, {"name": 3, "time": 1}]})");
    create("no.series", "[1, 2]");
    EXPECT_EQ(
        complaintAbout("twice.pvd"),
        "twice.pvd: lists several files for t = 10; a step must be one file, or one for each part");
    EXPECT_EQ(complaintAbout("empty.pvd"), "empty.pvd: lists no files");
    EXPECT_EQ(complaintAbout("time.pvd"), "time.pvd: a timestep is not a number");
    EXPECT_EQ(complaintAbout("nan.pvd"), "nan.pvd: a time is not finite");
    EXPECT_EQ(complaintAbout("nested.pvd"),
              "nested.pvd: lists \"twice.pvd\", which is a list of files itself");
    EXPECT_EQ(complaintAbout("grid.pvd"),
              "grid.pvd: not a collection of files: its root element is not <VTKFile "
              "type=\"Collection\">");
    EXPECT_TRUE(complaintAbout("cut.pvd").starts_with("cut.pvd: not a whole XML file: "));
    EXPECT_EQ(complaintAbout("cut.series"), "cut.series: not a whole JSON file");
    EXPECT_EQ(complaintAbout("odd.series"),
              "odd.series: file 1 of the series needs a \"name\" and a number \"time\"");
    EXPECT_EQ(complaintAbout("no.series"),
              "no.series: not a series of files: it has no list \"files\"");
}

TEST_F(Series, StopsWhenTheAbortFlagIsSet)
{
    create("a.vtu", step("1"));
    create("b.vtu", step("2"));
    create("s.pvd", pvd({{"0", "a.vtu"}, {"1", "b.vtu"}}));
    volatile bool abortFlag = false;
    Loader other({}, abortFlag);
    const auto function = other.loadFunction(reference("s.pvd"));
    abortFlag = true;
    EXPECT_THROW(valuesOf<Scalar>(*function), Aborted);
    EXPECT_THROW(other.loadFunction(reference("a.vtu")), Aborted);
}

}
