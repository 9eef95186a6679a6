#pragma once

#include <support/TemporaryFolder.hpp>

#include <filesystem>
#include <string>

/// The observable outcome of a command.
struct Outcome
{
    int exitCode;
    std::string standardOutput;
    std::string standardError;
};

/// A folder of its own for each test, with links to the example data. Commands run in it, in a
/// shell that finds `tavrin`, with these variables: PLUGIN is the plug-in with the trial algorithms,
/// HOSTILE the one that harms the program, LIBRARIES the folder of the program's libraries, and REAL
/// the folder of real data sets.
class Workshop
{
public:
    Workshop();

    /// Runs a shell command.
    Outcome run(const std::string& command) const;

    const std::filesystem::path& folder() const { return mFolder.path(); }

    void write(const std::string& name, const std::string& content) const
    {
        mFolder.write(name, content);
    }
    std::string read(const std::string& name) const { return mFolder.read(name); }

    /// The names of hidden files, each followed by a blank.
    std::string temporaryFiles() const;

private:
    support::TemporaryFolder mFolder;
};
