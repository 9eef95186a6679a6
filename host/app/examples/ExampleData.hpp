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
    /// The content in one line without a full stop.
    std::string description;
};

enum class ExistingFiles
{
    Refuse,
    Replace
};

/// Writes data sets made from formulas, and pipelines, into the folder, which is created if it does not exist.
/// A data set holds one array, and the bytes are the same in every run on every machine. Unless existing
/// files are to be replaced, one that has a name of these files is refused before anything is
/// written. Returns the files written. Throws `io::FileError` and `io::Aborted`.
std::vector<ExampleFile> writeExamples(const std::filesystem::path& folder, ExistingFiles existing,
                                       const volatile bool& abortFlag);

}
