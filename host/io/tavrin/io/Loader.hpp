#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/io/DataReference.hpp>
#include <tavrin/io/FileError.hpp>

#include <functional>
#include <map>

namespace tavrin::io
{

/// The content of a data file.
struct FileInfo
{
    struct Array
    {
        std::string name;
        Association association;
        std::size_t components;
        Precision precision;
        /// The type of the values that the array is read as, "3-D Vector"; empty where no function
        /// has as many components.
        std::string valueType;
    };

    std::filesystem::path file;
    /// The name of this block in a multi-block file; empty for other files.
    std::string block;
    /// "VTK XML unstructured grid", "time series of 6 files", ...
    std::string format;
    std::optional<StructuringType> structuring;
    /// The highest one of several blocks.
    std::size_t dimension = 3;
    std::size_t points = 0;
    std::size_t cells = 0;
    /// Points along each axis of a structured grid.
    std::optional<GridSize> size;
    /// Number of cells of each type.
    std::map<CellType, std::size_t> cellTypes;
    /// Lower and upper bound of each coordinate; empty where there are no points.
    std::vector<std::pair<double, double>> bounds;
    std::vector<Array> arrays;
    std::vector<double> timeSteps;
    /// The blocks of a file that has several; in a series those of the step of the reference. Then
    /// the members above summarize them, without a size or structuring.
    std::vector<FileInfo> blocks;
};

/// Reads data files. Files whose points and cells are equal give functions on one domain object, if
/// they are loaded through one loader. A list of files is read once by a loader, which does not see
/// later changes to it. One thread at a time may call a loader.
///
/// The steps of a series can be loaded one after the other by `?time=`: each opens the file of its
/// step alone. The loader keeps the grid of the step that was loaded last, so that a step with an
/// equal grid is defined on the same object, and nothing of earlier steps.
class TAVRIN_API Loader
{
public:
    /// Takes one line without a line end, "FILE: warning".
    using Warn = std::function<void(const std::string& line)>;

    /// Reading stops with `Aborted` soon after `abortFlag` becomes true. The flag must outlive the
    /// loader and the series that it made.
    Loader(Warn warn, const volatile bool& abortFlag);
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;
    ~Loader();

    /// Loads the array of a file as a function. A time series gives a function with all its steps,
    /// which are loaded when they are read. Throws `FileError` for a file that cannot be read, and
    /// `usage_error` for a file of several blocks and for a reference that does not fit what the
    /// file holds; the text then names what would fit.
    std::shared_ptr<const FunctionBase> loadFunction(const DataReference& reference);

    /// Loads the array as one function for each block of a file, in the order of the blocks; one
    /// function for a file without blocks. Blocks that do not have the array are left out with a
    /// warning. All grids get the dimension of the one with the highest. Throws as `loadFunction`.
    std::vector<std::shared_ptr<const FunctionBase>> loadFunctions(const DataReference& reference);

    /// Loads the grid of a file: an `EmbeddedCellComplex` or, without cells, a `PointCloud`. Throws
    /// as `loadFunction`, and `usage_error` for a reference with an array.
    std::shared_ptr<const Domain> loadGrid(const DataReference& reference);

    /// Describes what the file holds. Only file, block, dimension and time of the reference are used.
    FileInfo inspect(const DataReference& reference);

    /// The times of the steps that a reference names, ascending: those of a series, the one time of
    /// another file, or none. Opens no file of a series but its list, and reads no values. Throws
    /// `FileError`, and `usage_error` for a time that the file does not have.
    std::vector<double> timesOf(const DataReference& reference);

    /// The file of a reference, followed by the files that it lists, and by those that these list.
    /// A file that is not a readable list lists none.
    std::vector<std::filesystem::path> filesOf(const DataReference& reference);

private:
    class Implementation;
    std::unique_ptr<Implementation> mImplementation;
};

/// As `Loader::filesOf`, for a caller without a loader: reads the lists itself.
TAVRIN_API std::vector<std::filesystem::path> filesOf(const std::filesystem::path& file);

}
