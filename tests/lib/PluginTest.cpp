#include <TemporaryFolder.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <gtest/gtest.h>

#include <fstream>

namespace
{

using namespace tavrin;
namespace fs = std::filesystem;

class PluginTest : public testing::Test
{
protected:
    static std::string failureOf(const fs::path& library)
    {
        try
        {
            PluginRegistrationService::getInstance().load(library);
        }
        catch (const runtime_error& error)
        {
            return error.what();
        }
        return "loaded";
    }

    const TemporaryFolder folder;
    const fs::path flaimiob =
        PluginRegistrationService::getInstance().pluginFolder() / "libflaimiob.so";
};

TEST_F(PluginTest, LoadedUnderASecondNameReportsDuplicatesAndKeepsTheFirst)
{
    auto& registry = RegistrationService<AlgorithmFactory>::getInstance();
    ASSERT_EQ(failureOf(flaimiob), "loaded");
    const std::string name = "Field/Tensor Field Operator";
    const auto first = registry.find(name);
    ASSERT_NE(first, nullptr);

    const fs::path copy = folder / "libsecond.so";
    fs::copy_file(flaimiob, copy);
    testing::internal::CaptureStderr();
    EXPECT_EQ(failureOf(copy), "loaded");
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_NE(reports.find("error: registration of algorithm " + name + " failed.\nalgorithm \"" +
                           name + "\" already registered.\n"),
              std::string::npos)
        << reports;
    EXPECT_EQ(registry.find(name), first);

    // Loading the same file again is no second registration.
    testing::internal::CaptureStderr();
    EXPECT_EQ(failureOf(flaimiob), "loaded");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PluginTest, ThatCannotBeLoadedGivesAReason)
{
    EXPECT_EQ(failureOf(folder / "none.so"), (folder / "none.so").string() + ": no such file");
    EXPECT_EQ(failureOf(folder.path()), folder.path().string() + ": not a file");
    const fs::path text = folder / "text.so";
    std::ofstream(text) << "this is no library at all, but long enough to look at its beginning\n";
    EXPECT_EQ(failureOf(text), text.string() + ": not a shared library");
    const fs::path empty = folder / "empty.so";
    std::ofstream(empty).close();
    EXPECT_EQ(failureOf(empty), empty.string() + ": not a shared library");
}

TEST_F(PluginTest, ThatIsCutOffAnywhereIsRefused)
{
    const auto size = fs::file_size(flaimiob);
    for (const auto length : {std::uintmax_t{40}, std::uintmax_t{1000}, size / 2, size - 1})
    {
        const fs::path cut = folder / ("cut" + std::to_string(length) + ".so");
        fs::copy_file(flaimiob, cut);
        fs::resize_file(cut, length);
        EXPECT_NE(failureOf(cut), "loaded");
    }
}

TEST_F(PluginTest, WhoseInitializationThrowsIsRefused)
{
    EXPECT_EQ(failureOf(TAVRIN_THROWING_PLUGIN),
              std::string(TAVRIN_THROWING_PLUGIN) + ": its initialization throws an exception");
}

TEST_F(PluginTest, ResourcesAreFoundInTheFolderNamedFirst)
{
    auto& service = PluginRegistrationService::getInstance();
    fs::create_directories(folder / "utils/Things");
    ASSERT_EQ(setenv("TAVRIN_RESOURCE_PATH", (":" + folder.path().string()).c_str(), 1), 0);
    EXPECT_EQ(service.getResourcePath("utils/Things"), (folder / "utils/Things").string() + "/");
    try
    {
        service.getResourcePath("utils/None");
        FAIL();
    }
    catch (const runtime_error& error)
    {
        const std::string text = error.what();
        EXPECT_NE(text.find("resources \"utils/None\" not found"), std::string::npos) << text;
        EXPECT_NE(text.find(folder.path().string()), std::string::npos) << text;
    }
    unsetenv("TAVRIN_RESOURCE_PATH");
}

}
