#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Triangulation.hpp>

namespace tavrin::io
{

/// The cells of a file as cells of the host.
struct ConvertedCells
{
    CellTable table;
    /// For each cell that of the file which it is, or is a part of; nothing where that is itself.
    std::optional<std::vector<std::size_t>> origin;
    /// What was odd, one text each.
    std::vector<std::string> warnings;
};

/// Cells of types that the host has stay as they are, in the memory that they are in. Pixels and
/// voxels are renumbered; poly-vertices, poly-lines, strips, polygons, polyhedra and the prisms on
/// pentagons and hexagons are taken apart; cells of other higher orders become linear.
/// A cell that lists more vertices than its type has is read with the first of them.
/// Throws `Malformed` for cells that make no sense, and `Aborted`.
ConvertedCells convertCells(FileCells cells, std::size_t numPoints, const PositionOf& position,
                            const volatile bool& abortFlag);

}
