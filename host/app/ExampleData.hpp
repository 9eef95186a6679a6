#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::app
{

/// A file of the example data.
struct ExampleFile
{
    /// "double_gyre.pvd"
    std::string name;
    /// One line without a full stop: what it holds.
    std::string description;
};

/// Writes data sets made from formulas into the folder, which is made where it does not exist;
/// files that have the names are replaced. Each holds one array. Every run on every machine writes
/// the same bytes. Returns the files written.
/// Throws `io::FileError` and `io::Aborted`.
std::vector<ExampleFile> writeExamples(const std::filesystem::path& folder,
                                       const volatile bool& abortFlag);

}
