#include <support/TemporaryFolder.hpp>
#include <support/captured.hpp>
#include <support/errorOf.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;
namespace fs = std::filesystem;

class PluginTest : public testing::Test
{
protected:
    static std::string failureOf(const fs::path& library)
    {
        return errorOf<runtime_error>([&]
                                      { PluginRegistrationService::getInstance().load(library); });
    }

    const TemporaryFolder folder;
    const fs::path flaimiob =
        PluginRegistrationService::getInstance().pluginFolder() / "libflaimiob.so";
};

TEST_F(PluginTest, LoadedUnderASecondNameReportsDuplicatesAndKeepsTheFirst)
{
    auto& registry = RegistrationService<AlgorithmFactory>::getInstance();
    ASSERT_EQ(failureOf(flaimiob), "no exception");
    const std::string name = "Field/Tensor Field Operator";
    const auto first = registry.find(name);
    ASSERT_NE(first, nullptr);

    const fs::path copy = folder / "libsecond.so";
    fs::copy_file(flaimiob, copy);
    const std::string reports =
        standardErrorOf([&] { EXPECT_EQ(failureOf(copy), "no exception"); });
    EXPECT_NE(reports.find("error: registration of algorithm " + name + " failed.\nalgorithm \"" +
                           name + "\" already registered.\n"),
              std::string::npos)
        << reports;
    EXPECT_EQ(registry.find(name), first);

    // Loading the same file again is no second registration.
    EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(failureOf(flaimiob), "no exception"); }), "");
}

TEST_F(PluginTest, ThatCannotBeLoadedGivesAReason)
{
    EXPECT_EQ(failureOf(folder / "none.so"), (folder / "none.so").string() + ": no such file");
    EXPECT_EQ(failureOf(folder.path()), folder.path().string() + ": not a file");
    const fs::path text = folder / "text.so";
    folder.write("text.so", "this is no library, but it is long enough to have a header\n");
    EXPECT_EQ(failureOf(text), text.string() + ": not a shared library");
    const fs::path empty = folder / "empty.so";
    folder.write("empty.so", "");
    EXPECT_EQ(failureOf(empty), empty.string() + ": not a shared library");
}

TEST_F(PluginTest, ThatWasBuiltForAnotherInterfaceIsRefused)
{
    std::string bytes = folder.read(flaimiob.string());
    const std::string needed = "libtavrin-lib.so.";
    const auto at = bytes.find(needed);
    ASSERT_NE(at, std::string::npos);
    const char version = std::exchange(bytes[at + needed.size()], '0');
    folder.write("stale.so", bytes);
    EXPECT_EQ(failureOf(folder / "stale.so"),
              (folder / "stale.so").string() +
                  ": built for interface version 0 of tavrin, and this is version " + version +
                  "; build it again");
}

TEST_F(PluginTest, ThatIsTruncatedAnywhereIsRefused)
{
    const auto size = fs::file_size(flaimiob);
    for (const auto length : {std::uintmax_t{40}, std::uintmax_t{1000}, size / 2, size - 1})
    {
        const fs::path cut = folder / ("cut" + std::to_string(length) + ".so");
        fs::copy_file(flaimiob, cut);
        fs::resize_file(cut, length);
        EXPECT_NE(failureOf(cut), "no exception");
    }
}

TEST_F(PluginTest, ResourcesAreFoundInTheFolderNamedFirst)
{
    auto& service = PluginRegistrationService::getInstance();
    fs::create_directories(folder / "utils/Things");
    ASSERT_EQ(setenv("TAVRIN_RESOURCE_PATH", (":" + folder.path().string()).c_str(), 1), 0);
    EXPECT_EQ(service.getResourcePath("utils/Things"), (folder / "utils/Things").string() + "/");
    const std::string text = errorOf<runtime_error>([&] { service.getResourcePath("utils/None"); });
    EXPECT_NE(text.find("resources \"utils/None\" not found"), std::string::npos) << text;
    EXPECT_NE(text.find(folder.path().string()), std::string::npos) << text;
    unsetenv("TAVRIN_RESOURCE_PATH");
}

}
