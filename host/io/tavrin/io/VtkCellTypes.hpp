#pragma once

#include <tavrin/domain/CellType.hpp>

#include <optional>

namespace tavrin::io
{

/// The cell type with VTK's number `vtkType`, if both number the vertices in the same way; `Invalid`
/// for an empty cell. Nothing for a cell that has to be renumbered (pixel, voxel) or decomposed
/// (strip, polygon, polyhedron), and for an unknown one.
std::optional<CellType> cellTypeOf(int vtkType);

/// VTK's number for a cell type. A subparametric cell has the number of the quadratic cell with the
/// same vertices.
int vtkTypeOf(CellType type);

}
