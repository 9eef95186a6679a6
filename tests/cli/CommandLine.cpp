#include "CommandLine.hpp"

#include <support/realData.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

/// The folder of example data. CTest creates it before all tests; without CTest the first test does.
fs::path exampleFolder()
{
    const fs::path folder = TAVRIN_CLI_EXAMPLES;
    if (fs::exists(folder / "flow.vtu"))
        return folder;
    const std::string command = TAVRIN_PROGRAM " examples " + folder.string() + " >/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return folder;
}

}

Workshop::Workshop()
{
    for (const auto& entry : fs::directory_iterator(exampleFolder()))
        fs::create_symlink(entry.path(), mFolder / entry.path().filename());
}

std::string Workshop::temporaryFiles() const
{
    std::string names;
    for (const auto& entry : fs::directory_iterator(folder()))
        if (entry.path().filename().string().starts_with('.'))
            names += entry.path().filename().string() + ' ';
    return names;
}

Outcome Workshop::run(const std::string& command) const
{
    const auto real = support::realDataFolder();
    const fs::path program = TAVRIN_PROGRAM;
    const fs::path capture = mFolder / ".captured";
    fs::create_directory(capture);
    std::ofstream(capture / "script")
        << "cd '" << folder().string() << "' || exit 99\n"
        << "PATH='" << program.parent_path().string() << "':$PATH\n"
        << "PLUGIN='" << TAVRIN_TRIAL_PLUGIN << "'\n"
        << "HOSTILE='" << TAVRIN_HOSTILE_PLUGIN << "'\n"
        << "LIBRARIES='" << program.parent_path().parent_path().string() << "/lib'\n"
        << "REAL='" << (real ? real->string() : "") << "'\n"
        << "unset TAVRIN_PLUGIN_PATH\n"
        // In a sanitized build: drivers and the font library leak memory, and crashes are as in others.
        << "export ASAN_OPTIONS=\"$ASAN_OPTIONS:detect_leaks=0:handle_segv=0\"\n"
        << command << '\n';
    const int status =
        std::system(("sh '" + (capture / "script").string() + "' >'" + (capture / "out").string() +
                     "' 2>'" + (capture / "err").string() + "' </dev/null")
                        .c_str());
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                    mFolder.read(".captured/out"), mFolder.read(".captured/err")};
    fs::remove_all(capture);
    return outcome;
}
