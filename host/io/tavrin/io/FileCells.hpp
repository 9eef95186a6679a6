#pragma once

#include <tavrin/io/StoredArray.hpp>

#include <cstdint>
#include <vector>

namespace tavrin::io
{

/// The cells of an unstructured grid as a file lists them, with VTK's cell type numbers. Nothing is
/// checked but that there is one offset more than there are types.
struct FileCells
{
    std::vector<std::uint8_t> types;
    IndexArray offsets{std::vector<std::int64_t>{0}};
    IndexArray connectivity{std::vector<std::int64_t>{}};
    /// The faces of polyhedra, one after the other: the number of faces, and for each face the
    /// number of its points and the points. That of cell i begins at faceStarts[i].
    IndexArray faces{std::vector<std::int64_t>{}};
    std::vector<std::int64_t> faceStarts;
};

/// The lists of cells of a file put one after the other.
class CellCollector
{
public:
    /// Adds cells whose vertices count from `firstPoint`. A single list is taken over as it is.
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

/// The lists that polygonal data keep their cells in, in the order of the cell data.
enum class PolyList
{
    Vertices,
    Lines,
    Polygons,
    Strips
};

/// VTK's number for a cell with so many vertices in a list of polygonal data.
std::uint8_t vtkTypeOf(PolyList list, std::size_t numVertices);

/// Adds the type numbers that a file lists; those that are no type become 255.
void appendTypes(std::vector<std::uint8_t>& types, const StoredArray& numbers);

}
