#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Triangulation.hpp>

namespace tavrin::io
{

/// The cells of a file as cells of the host.
struct ConvertedCells
{
    CellTable table;
    /// For each cell the cell of the file that it comes from; nothing where both have the same index.
    std::optional<std::vector<std::size_t>> origin;
    std::vector<std::string> warnings;
};

/// Converts the cells of a file. Cells of types that the host has keep their memory. Pixels and
/// voxels are renumbered; poly-vertices, poly-lines, strips, polygons, polyhedra, and pentagonal and
/// hexagonal prisms are decomposed; cells of unknown higher orders become linear. If a cell lists
/// more vertices than its type has, only the first ones are used.
/// Throws `Malformed` for invalid cells, and `Aborted`.
ConvertedCells convertCells(FileCells cells, std::size_t numPoints, const PositionOf& position,
                            const volatile bool& abortFlag);

}
