#pragma once

#include <tavrin/base/Export.hpp>

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tavrin
{

/// The shape of a cell and the order of interpolation in it. Vertices of linear cells are numbered as in
/// VTK files. Those of quadratic cells are the corners, then the midpoints of the edges, then, for types
/// that have them, the midpoints of the faces and of the body.
///
/// A subparametric cell has the geometry of the linear cell with the same corners; only values are
/// interpolated quadratically. The types after `Invalid` are less common ones that occur in files.
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

/// The shape of a cell, whatever the order of interpolation in it.
enum class CellShape : unsigned char
{
    Point,
    Line,
    Triangle,
    Quad,
    Tetrahedron,
    Pyramid,
    Prism,
    Hexahedron
};

/// The number of cell types, `Invalid` included.
inline constexpr std::size_t numCellTypes = 23;

/// The largest number of vertices of a cell.
inline constexpr std::size_t maximumVertices = 27;

/// "Points", "Lines", ... "INVALID", ...
TAVRIN_API std::string_view nameOf(CellType type);

/// The shape of cells of a type, which is not `Invalid`.
TAVRIN_API CellShape shapeOf(CellType type);

/// The number of vertices of a cell of this type; 0 for `Invalid`.
TAVRIN_API std::size_t numVerticesOf(CellType type);

/// The dimension of the cell itself: 0 for a point ... 3 for a hexahedron.
TAVRIN_API std::size_t dimensionOf(CellType type);

/// The linear type with the same corners; a linear type is its own.
TAVRIN_API CellType linearTypeOf(CellType type);

/// Both ends of an edge, by their numbers among the corners of the cell.
using CellEdge = std::array<std::size_t, 2>;

/// The edges of a cell, in the order of their midpoints among the vertices of quadratic cells.
TAVRIN_API std::span<const CellEdge> edgesOf(CellType type);

/// Twice the reference coordinates of a vertex: 0, 1 or 2 each.
using HalfReference = std::array<unsigned char, 3>;

/// The vertices of the reference cell. Reference coordinates are r, s and t:
///
/// - lines, quads, hexahedra: 0 to 1 each; vertex 1 is at r = 1, vertex 3 of a quad at s = 1, vertex
///   4 of a hexahedron at t = 1
/// - triangles, tetrahedra: the weights of vertices 1, 2 and 3 of the linear cell
/// - prisms: r and s as in triangle 0 1 2, t from there to triangle 3 4 5
/// - pyramids: r and s from 0 to 1 - t over the base, t from the base to the apex (0, 0, 1)
TAVRIN_API std::span<const HalfReference> verticesOf(CellType type);

}
