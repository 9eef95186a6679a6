#pragma once

#include <tavrin/io/StoredArray.hpp>

#include <cstdint>
#include <vector>

namespace tavrin::io
{

/// The cells of an unstructured grid as a file lists them, with VTK's cell type numbers. The lists are
/// unchecked, except that there is one offset more than there are types.
struct FileCells
{
    std::vector<std::uint8_t> types;
    IndexArray offsets{std::vector<std::int64_t>{0}};
    IndexArray connectivity{std::vector<std::int64_t>{}};
    /// The face lists of all polyhedra: the number of faces, then for each face the number of its
    /// points and the points. The list of cell i begins at faceStarts[i].
    IndexArray faces{std::vector<std::int64_t>{}};
    std::vector<std::int64_t> faceStarts;
};

/// Concatenates the lists of cells of a file.
class CellCollector
{
public:
    /// Adds cells whose vertex numbers are relative to `firstPoint`. A single list is not copied.
    void add(IndexArray offsets, IndexArray connectivity, std::size_t firstPoint);

    IndexArray offsets();
    IndexArray connectivity();

private:
    struct Part
    {
        IndexArray offsets;
        IndexArray connectivity;
        std::size_t firstPoint;
    };
    void merge();

    std::vector<Part> mParts;
};

/// The lists of cells in polygonal data, in the order of the cell data.
enum class PolyList
{
    Vertices,
    Lines,
    Polygons,
    Strips
};

/// VTK's type number for a cell with a number of vertices in a list of polygonal data.
std::uint8_t vtkTypeOf(PolyList list, std::size_t numVertices);

/// Appends the type numbers that a file lists; numbers that are not valid become 255.
void appendTypes(std::vector<std::uint8_t>& types, const StoredArray& numbers);

}
