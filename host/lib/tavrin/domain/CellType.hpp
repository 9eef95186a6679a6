#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>
#include <string_view>

namespace tavrin
{

/// The shape of a cell and the order of interpolation in it. Vertices of linear cells are numbered
/// as in VTK files; those of quadratic cells are the corners, then the middles of the edges, then,
/// where there are more, those of the faces and the body.
///
/// In a subparametric cell the geometry is that of the linear cell of its corners, and only the
/// values are interpolated quadratically. The kinds after `Invalid` are those that occur in files
/// beyond the common ones.
enum class CellType : unsigned char
{
    Points,
    Lines,
    Triangles,
    Quads,
    Tetrahedra,
    Pyramids,
    Prisms,
    Hexahedra,
    SubparametricQuadraticLine,
    SubparametricQuadraticTriangle,
    SubparametricQuadraticQuad,
    SubparametricQuadraticTetrahedron,
    SubparametricQuadraticHexahedron,
    QuadraticLine,
    QuadraticTriangle,
    QuadraticQuad,
    QuadraticTetrahedron,
    QuadraticHexahedron,
    Invalid,
    QuadraticPyramid,
    QuadraticPrism,
    BiquadraticQuad,
    TriquadraticHexahedron
};

/// The number of kinds of cell, `Invalid` included.
inline constexpr std::size_t numCellTypes = 23;

/// The largest number of vertices of a cell.
inline constexpr std::size_t maximumVertices = 27;

/// "Points", "Lines", ... "INVALID", ...
TAVRIN_API std::string_view nameOf(CellType type);

/// The number of vertices of a cell of this type; 0 for `Invalid`.
TAVRIN_API std::size_t numVerticesOf(CellType type);

/// The dimension of the cell itself: 0 for a point ... 3 for a hexahedron.
TAVRIN_API std::size_t dimensionOf(CellType type);

/// The linear type with the same corners; a linear type is its own.
TAVRIN_API CellType linearTypeOf(CellType type);

}
