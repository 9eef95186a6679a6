#pragma once

#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/io/DataReference.hpp>
#include <tavrin/io/FileCells.hpp>
#include <tavrin/io/StoredArray.hpp>

#include <filesystem>
#include <limits>
#include <map>

namespace tavrin::io
{

/// One opened data file: what it says about itself, and its arrays, which are read when asked for.
/// All reading throws `Malformed` and `Aborted`.
class DataFile
{
public:
    struct Array
    {
        std::string name;
        Association association;
        Precision precision;
        std::size_t components;
        std::vector<std::string> componentNames;
    };

    /// The marks of blanked and ghost elements: those with one of the bits of `mask` set.
    struct Marks
    {
        StoredArray array;
        std::uint8_t mask;
    };

    /// First and last index along each axis.
    using Extent = std::array<std::int64_t, 6>;

    DataFile() = default;
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;
    virtual ~DataFile() = default;

    /// "VTK XML unstructured grid" and the like.
    std::string format;
    StructuringType structuring = StructuringType::Unstructured;
    std::size_t numPoints = 0;
    std::size_t numCells = 0;
    /// Of structured grids.
    Extent extent{0, -1, 0, -1, 0, -1};
    /// Of uniform grids.
    std::array<double, 3> origin{0.0, 0.0, 0.0};
    std::array<double, 3> spacing{1.0, 1.0, 1.0};
    Matrix3 direction{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    /// Those with numbers, without the marks of ghosts.
    std::vector<Array> arrays;
    std::optional<double> time;

    GridSize size() const;

    /// One tuple per point or cell as the file lists them.
    virtual StoredArray readArray(const Array& array) = 0;
    virtual std::optional<Marks> readMarks(Association association) = 0;
    /// Of curvilinear and unstructured grids.
    virtual StoredArray readPoints() = 0;
    /// Of a rectilinear grid.
    virtual StoredArray readCoordinates(std::size_t axis) = 0;
    /// Of an unstructured grid.
    virtual FileCells readCells() = 0;

protected:
    std::size_t numElements(Association association) const
    {
        return association == Association::Points ? numPoints : numCells;
    }

    /// Sets the time to a number that a file has for it; one that is not finite is none.
    void setTime(const StoredArray& number);

    /// Sets the extent and the numbers of points and cells that follow from it.
    void setExtent(const Extent& newExtent);

    /// Adds an array; one of the same name and association is replaced, as VTK's readers do.
    void addArray(Array array);

private:
    std::map<std::pair<Association, std::string>, std::size_t> mArrayIndices;
};

/// Points along each axis. Throws `Malformed` for an extent that is turned around or out of reach.
GridSize sizeOf(const DataFile::Extent& extent);

std::size_t numPointsOf(const GridSize& size);
std::size_t numCellsOf(const GridSize& size);

/// Whether an array of this name marks ghosts, and by which bits.
std::optional<std::uint8_t> ghostMask(const std::string& name, Association association);

/// The extension in small letters, ".vtu".
std::string extensionOf(const std::filesystem::path& path);

/// Opens a file by its extension. Throws `Malformed` where it is not what the extension says.
std::unique_ptr<DataFile> openXmlFile(const std::filesystem::path& path,
                                      const volatile bool& abortFlag);
std::unique_ptr<DataFile> openLegacyFile(const std::filesystem::path& path,
                                         const volatile bool& abortFlag);

}
