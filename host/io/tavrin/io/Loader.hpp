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

/// What a data file holds.
struct FileInfo
{
    struct Array
    {
        std::string name;
        Association association;
        std::size_t components;
        Precision precision;
        /// Of the function that the array gives: "3-D Vector"; empty where it gives none.
        std::string valueType;
    };

    std::filesystem::path file;
    /// The name of this block in a multi-block file; else empty.
    std::string block;
    /// "VTK XML unstructured grid", "time series of 6 files", ...
    std::string format;
    std::optional<StructuringType> structuring;
    /// The highest of several blocks.
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
    /// Where there are several; in a series those of the step meant. Then all of the above is of all
    /// of them together, and there is no size and no structuring.
    std::vector<FileInfo> blocks;
};

/// Reads data files. All that is loaded through one loader shares its domains: files whose points
/// and cells are equal give functions on one domain object.
class TAVRIN_API Loader
{
public:
    /// Takes one line without a line end, "FILE: what is odd".
    using Warn = std::function<void(const std::string& line)>;

    /// Reading stops with `Aborted` soon after `abortFlag`, which must outlive the loader and the
    /// series that it made, reads true.
    Loader(Warn warn, const volatile bool& abortFlag);
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;
    ~Loader();

    /// The array of a file as a function. A time series gives a function with all its steps, which
    /// are loaded when they are read. Throws `FileError` for a file that cannot be read and
    /// `usage_error` for a reference that does not fit what the file holds, naming what there is,
    /// and for a file of several blocks.
    std::shared_ptr<const FunctionBase> loadFunction(const DataReference& reference);

    /// The array as one function for each block of a file, in the order of the blocks; one for a file
    /// without blocks. The blocks that do not have the array are left out with a warning. All grids
    /// get as many coordinates as that which needs most. Throws as `loadFunction`.
    std::vector<std::shared_ptr<const FunctionBase>> loadFunctions(const DataReference& reference);

    /// The grid of a file: an `EmbeddedCellComplex` or, without cells, a `PointCloud`. Throws as
    /// `loadFunction`; an array in the reference is a `usage_error`.
    std::shared_ptr<const Domain> loadGrid(const DataReference& reference);

    /// What the file holds; of the reference only file, dimension and time are used.
    FileInfo inspect(const DataReference& reference);

private:
    class Implementation;
    std::unique_ptr<Implementation> mImplementation;
};

}
