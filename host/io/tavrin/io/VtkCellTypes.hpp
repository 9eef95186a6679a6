#pragma once

#include <tavrin/domain/CellType.hpp>

#include <optional>

namespace tavrin::io
{

/// The kind of cell that a VTK file's cell type number stands for where its vertices are also
/// numbered alike; `Invalid` for an empty cell. Nothing for a cell that has to be renumbered
/// (pixel, voxel), taken apart (strip, polygon, polyhedron) or is unknown.
std::optional<CellType> cellTypeOf(int vtkType);

/// The number under which a kind of cell is written. A subparametric cell is written as the
/// quadratic one, which has the same vertices.
int vtkTypeOf(CellType type);

}
