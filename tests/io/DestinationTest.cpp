#include "WriterSamples.hpp"

#include <tavrin/io/Loader.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>

#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace samples;
namespace fs = std::filesystem;

/// Where output goes, and what it replaces.
class Destination : public TemporaryFolderTest
{
protected:
    static std::shared_ptr<const FunctionBase> steps(std::vector<double> times)
    {
        return awkwardFunction(uniformGrid<1>(), PointSetBase::Points, std::move(times));
    }

    void write(const FunctionBase& function, const std::string& file)
    {
        io::writeFunction(function, "f", folder() / file, neverAbort);
    }

    std::vector<double> timesOf(const std::string& file)
    {
        io::Loader loader({}, neverAbort);
        return loader.inspect(io::DataReference::parse((folder() / file).string())).timeSteps;
    }

    static void writeText(const fs::path& file, const std::string& text)
    {
        io::OutputFile output(file, neverAbort);
        output.stream() << text;
        output.publish();
    }

    /// The number of a process that does not exist any more.
    static pid_t deadProcess()
    {
        const pid_t process = fork();
        if (process == 0)
            _exit(0);
        waitpid(process, nullptr, 0);
        return process;
    }
};

TEST_F(Destination, IsWhatALinkLeadsTo)
{
    create("real/old.vti", "old");
    fs::create_symlink("real/old.vti", folder() / "old.vti");
    fs::create_symlink("real/new.vti", folder() / "new.vti");
    fs::create_symlink("new.vti", folder() / "twice.vti");
    write(*steps({}), "old.vti");
    write(*steps({1.0}), "twice.vti");
    EXPECT_EQ(listing(), (std::vector<std::string>{"new.vti", "old.vti", "real/", "real/new.vti",
                                                   "real/old.vti", "twice.vti"}));
    EXPECT_TRUE(fs::is_symlink(folder() / "old.vti"));
    EXPECT_TRUE(fs::is_symlink(folder() / "new.vti"));
    EXPECT_EQ(timesOf("real/new.vti"), std::vector<double>{1.0});

    fs::create_symlink("gone/far.vti", folder() / "far.vti");
    EXPECT_EQ(errorOf<io::FileError>([&] { write(*steps({}), "far.vti"); }),
              (folder() / "far.vti").string() + ": the folder " + (folder() / "gone").string() +
                  " does not exist");
}

TEST_F(Destination, IsTheSeriesThatALinkLeadsTo)
{
    fs::create_directory(folder() / "other");
    write(*steps({1.0}), "other/real.pvd");
    fs::create_symlink("other/real.pvd", folder() / "link.pvd");
    write(*steps({2.0, 3.0}), "link.pvd");
    EXPECT_EQ(timesOf("other/real.pvd"), (std::vector<double>{2.0, 3.0}));
    EXPECT_EQ(listing(),
              (std::vector<std::string>{"link.pvd", "other/", "other/real.pvd", "other/real/",
                                        "other/real/real_0000.vti", "other/real/real_0001.vti"}));
    EXPECT_TRUE(io::isStepOf(folder() / "other/real/real_0001.vti", folder() / "link.pvd"));
}

TEST_F(Destination, IsWrittenToAndNotReplacedWhereItIsNoRegularFile)
{
    // A pipe with a name.
    const fs::path pipe = folder() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { std::getline(std::ifstream(pipe), received); });
    writeText(pipe, "through the pipe\n");
    reader.join();
    EXPECT_EQ(received, "through the pipe");
    EXPECT_TRUE(fs::is_fifo(pipe));

    // A file that is open as a stream: what is written comes after what is there already.
    create("log", "");
    const int stream = open((folder() / "log").c_str(), O_WRONLY);
    ASSERT_EQ(::write(stream, "first\n", 6), 6);
    for (const std::string name : {"/dev/fd/", "/proc/self/fd/"})
        writeText(name + std::to_string(stream), "then\n");
    ASSERT_EQ(::write(stream, "last\n", 5), 5);
    close(stream);
    EXPECT_EQ(contentOf("log"), "first\nthen\nthen\nlast\n");

    writeText("/dev/null", "nothing");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(errorOf<io::FileError>([&] { writeText("/dev/full", "too much"); }),
              "/dev/full: No space left on device");
    EXPECT_EQ(listing(), (std::vector<std::string>{"log", "pipe"}));
}

TEST_F(Destination, IsStandardOutputForTables)
{
    create("out", "before\n");
    const int before = dup(STDOUT_FILENO);
    const int stream = open((folder() / "out").c_str(), O_WRONLY | O_APPEND);
    dup2(stream, STDOUT_FILENO);
    std::string error;
    std::string untilPublished;
    try
    {
        const auto file = io::prepareFunction(*steps({}), "f", "-.csv", neverAbort);
        untilPublished = contentOf("out");
        file->publish();
        write(*steps({}), "-.csv");
    }
    catch (const std::exception& exception)
    {
        error = exception.what();
    }
    dup2(before, STDOUT_FILENO);
    close(before);
    close(stream);
    EXPECT_EQ(error, "");
    EXPECT_EQ(untilPublished, "before\n");
    EXPECT_TRUE(contentOf("out").starts_with("before\nx,f\n0.3")) << contentOf("out");
    // In a folder it is an ordinary name.
    EXPECT_EQ(listing(), (std::vector<std::string>{"-.csv", "out"}));
    EXPECT_EQ(
        errorOf<usage_error>([&] { io::writeFunction(*steps({}), "f", "-.vti", neverAbort); }),
        "-.vti: standard output takes tables, as -.csv");
    io::requireWritable("-.csv");
}

TEST_F(Destination, IsClearedOfWhatKilledProcessesLeft)
{
    const std::string dead = ".tavrin-" + std::to_string(deadProcess());
    create(dead + "-0.tmp", "half a file");
    create(dead + "-1.tmp/run_0000.vti", "a step");
    create(dead + "-2.tmp/notes.txt", "of somebody else");
    create(".tavrin-1-0.tmp", "of a living process");
    create(".tavrin-x-0.tmp", "not one of ours");
    // As a process on another computer has it, whose number says nothing here.
    create(dead + "-3.tmp", "claimed");
    io::OutputFile claiming(folder() / "a", neverAbort);
    const fs::path claimed = folder() / (dead + "-3.tmp");
    for (const auto& entry : fs::directory_iterator(folder()))
        if (entry.path().filename().string().starts_with(".tavrin-" + std::to_string(getpid())))
            fs::rename(entry.path(), claimed);

    // Each folder is looked at once in a run; this is another name for the same one.
    write(*steps({}), "./f.vti");
    EXPECT_EQ(listing(), (std::vector<std::string>{".tavrin-1-0.tmp", dead + "-2.tmp/",
                                                   dead + "-2.tmp/notes.txt", dead + "-3.tmp",
                                                   ".tavrin-x-0.tmp", "f.vti"}));
}

TEST_F(Destination, MayBeASeriesWhoseListWasDeleted)
{
    write(*steps({1.0, 2.0, 3.0}), "run.pvd");
    fs::remove(folder() / "run.pvd");
    create("run/run_0007.vti", "of somebody else");
    write(*steps({4.0, 5.0}), "run.pvd");
    EXPECT_EQ(timesOf("run.pvd"), (std::vector<double>{4.0, 5.0}));
    EXPECT_EQ(listing(), (std::vector<std::string>{"run.pvd", "run/", "run/run_0000.vti",
                                                   "run/run_0001.vti", "run/run_0007.vti"}));
}

TEST_F(Destination, MayHaveAnyNameAndSoMayArrays)
{
    // Latin-1, control characters, and a code point that XML forbids.
    for (const std::string name : {"Str\xf6mung", "a\x01\tb", "x\xef\xbf\xbfy", "a&<\">'b"})
    {
        const std::string file = "run " + name + ".pvd";
        io::writeFunction(*steps({1.0, 2.0}), name, folder() / file, neverAbort);
        io::Loader loader({}, neverAbort);
        io::DataReference reference;
        reference.file = folder() / file;
        const auto function = loader.loadFunction(reference);
        const auto& values = dynamic_cast<const Function<Scalar>&>(*function).values();
        EXPECT_EQ((*values)[3], (*awkwardValues<Scalar>(4).rbegin())) << name;
    }
}

}
