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

/// An open data file: its structure, and its arrays, which are read on request. All reading throws
/// `Malformed` and `Aborted`.
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

    /// The bits of a mark for blanked and ghost elements.
    struct GhostBits
    {
        /// An element with one of these bits is not part of the field.
        std::uint8_t removed;
        /// A point with one of these bits belongs to another piece. It stays where a cell of this
        /// piece needs it.
        std::uint8_t duplicate;
    };

    /// One mark per point or cell.
    struct Marks
    {
        StoredArray array;
        GhostBits bits;
    };

    /// The coordinates of a rectilinear grid along an axis, and the precision in which they are stored.
    struct Coordinates
    {
        std::vector<double> values;
        Precision precision = Precision::Float64;
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
    /// For structured grids only.
    Extent extent{0, -1, 0, -1, 0, -1};
    /// Origin, spacing and direction are for uniform grids only.
    std::array<double, 3> origin{0.0, 0.0, 0.0};
    std::array<double, 3> spacing{1.0, 1.0, 1.0};
    Matrix3 direction{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    /// The arrays of numbers, without those that mark ghosts.
    std::vector<Array> arrays;
    std::optional<double> time;
    /// The times of all steps where the file holds several, ascending; empty for other files.
    std::vector<double> stepTimes;

    GridSize size() const;

    /// Opens one of several steps, which shares the memory of this object. This object is the first
    /// step itself.
    virtual std::unique_ptr<DataFile> openStep(std::size_t step) const;

    /// One tuple per point or cell, in the order of the file.
    virtual StoredArray readArray(const Array& array) = 0;
    virtual std::optional<Marks> readMarks(Association association) = 0;
    /// The points of a curvilinear or unstructured grid.
    virtual StoredArray readPoints() = 0;
    virtual Coordinates readCoordinates(std::size_t axis) = 0;
    /// The cells of an unstructured grid.
    virtual FileCells readCells() = 0;

protected:
    std::size_t numElements(Association association) const
    {
        return association == Association::Points ? numPoints : numCells;
    }

    /// Sets the time to the number in a file, unless it is not finite.
    void setTime(const StoredArray& number);

    /// Sets the extent, and the numbers of points and cells that follow from it.
    void setExtent(const Extent& newExtent);

    /// Adds an array. It replaces an earlier one with the same name and association, as in VTK.
    void addArray(Array array);

private:
    std::map<std::pair<Association, std::string>, std::size_t> mArrayIndices;
};

/// Points along each axis. Throws `Malformed` for an extent that is reversed or too large.
GridSize sizeOf(const DataFile::Extent& extent);

std::size_t numPointsOf(const GridSize& size);
std::size_t numCellsOf(const GridSize& size);

/// The bits of the marks in an array of this name; nothing for an array that does not mark ghosts.
std::optional<DataFile::GhostBits> ghostBitsOf(const std::string& name, Association association);

}
