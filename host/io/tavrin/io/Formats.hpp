#pragma once

#include <tavrin/domain/CellComplex.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::io
{

class DataFile;
class FunctionWriter;
class StepWriter;
struct InputFile;
struct ListedFile;

/// What a file of a format stands for.
enum class FileContent
{
    /// One grid and the arrays on it, at one time or at none.
    Grid,
    /// A list of the files of several blocks.
    Blocks,
    /// A list of the files of a time series.
    TimeSteps
};

/// One file format: what identifies it, what it holds, and what reads and writes it. To add a
/// format, write its files, add its row to the table in Formats.cpp, and list its files in
/// CMakeLists.txt; file checks, messages and help derive from the row.
struct FileFormat
{
    /// In lower case, with its dot.
    std::string_view extension = {};
    /// "VTK XML image data".
    std::string_view name = {};
    /// Formats of one family begin alike: "VTK XML", "legacy VTK".
    std::string_view family = {};
    /// The first characters of every file of the family, after blanks; empty where there is no
    /// such text.
    std::string_view beginning = {};
    /// What the file itself calls its content, such as "ImageData"; may be empty.
    std::string_view dataSet = {};
    FileContent content = FileContent::Grid;
    /// The kinds of grid that can be written into a file of the format. The first is the kind of
    /// grid that a VTK XML file gives when it is read.
    std::vector<StructuringType> grids = {};
    /// Whether it holds points without cells.
    bool holdsPointClouds = false;
    /// Whether several arrays can be written into a file.
    bool holdsSeveralArrays = true;
    /// Whether the format holds these cells of an unstructured grid; null where it holds all.
    bool (*holdsCells)(const CellComplex& cells) = nullptr;

    /// Opens a file whose content is a grid. Null where the format is not read, or is a list.
    std::unique_ptr<DataFile> (*open)(const FileFormat& format, InputFile file,
                                      const volatile bool& abortFlag) = nullptr;
    /// Reads a list of files. Null where the format is not read, or holds a grid.
    std::vector<ListedFile> (*readList)(const std::filesystem::path& file) = nullptr;
    /// Makes the writer of files with values on a domain, which must outlive the writer. Null where
    /// the format is not written, or is a list.
    std::unique_ptr<StepWriter> (*makeWriter)(const Domain& domain,
                                              const volatile bool& abortFlag) = nullptr;
    /// Makes the writer of a file with any number of time steps. Null where the format is not
    /// written, or holds one step.
    std::unique_ptr<FunctionWriter> (*startSeries)(const std::filesystem::path& file,
                                                   const volatile bool& abortFlag) = nullptr;

    /// Whether a file that is no list may hold several time steps when it is read.
    bool mayHoldSteps() const { return open != nullptr && startSeries != nullptr; }

    bool isRead() const { return open != nullptr || readList != nullptr; }
    bool isWritten() const { return makeWriter != nullptr || startSeries != nullptr; }
};

/// All formats; of those that suit some data, the first is the best.
TAVRIN_API const std::vector<FileFormat>& fileFormats();

/// The format that the extension of a file names, in any case of letters; null where there is none.
TAVRIN_API const FileFormat* findFormat(const std::filesystem::path& file);

/// The extension in lower case, ".vtu".
std::string extensionOf(const std::filesystem::path& file);

/// Whether the extension of a file is that of a list of time steps.
TAVRIN_API bool isSeries(const std::filesystem::path& file);
/// Whether the extension of a file is that of a list of other files.
bool isList(const std::filesystem::path& file);

/// The extensions of the formats that are read, ".vti" and so on.
TAVRIN_API std::vector<std::string> readableExtensions();

/// The extensions of the formats that are written.
TAVRIN_API std::vector<std::string> writableExtensions();

/// Whether values of `numTimeSteps` steps on the domain can be written to a file of the format.
bool isSuitable(const FileFormat& format, const Domain& domain, std::size_t numTimeSteps);

/// Extensions of the formats that values of `numTimeSteps` steps on the domain can be written to,
/// best first; empty for a domain without points.
TAVRIN_API std::vector<std::string> extensionsFor(const Domain& domain, std::size_t numTimeSteps);

/// The best format for one step of values on the domain, which must have points.
const FileFormat& bestGridFormat(const Domain& domain);

/// "a uniform grid", "a point cloud".
std::string describeGridKind(const Domain& domain);

/// ".vti, .vts or .pvd": the texts with commas, and the word before the last.
TAVRIN_API std::string enumerate(const std::vector<std::string>& texts, std::string_view word);

}
