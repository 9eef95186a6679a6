#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/domain/CellType.hpp>

#include <array>
#include <span>

namespace tavrin
{

/// Reference coordinates r, s, t in a cell, as `verticesOf` defines them; those beyond the cell's dimension
/// are ignored.
using Reference = std::array<double, 3>;

/// The weights of the cell's vertices at a reference point. They sum to 1, and each is 1 at its own
/// vertex and 0 at the others. `weights` has `numVerticesOf(type)` entries.
///
/// Linear cells: products of linear functions; for the pyramid divided by 1 - t [1]. Quadratic cells
/// without inner vertices (serendipity): the function of an edge's midpoint is 4 times the product of
/// the linear functions that vanish at its ends, times those that vanish on the opposite sides; half
/// of it is subtracted from the linear functions of both ends [2]. Cells with inner vertices: products of
/// quadratic Lagrange polynomials. A subparametric cell has the functions of its quadratic kind.
///
/// [1] G. Bedrosian, Shape functions and integration formulas for three-dimensional finite element
///     analysis, Int. J. Numer. Meth. Engng. 35 (1992)
/// [2] O. C. Zienkiewicz, R. L. Taylor, The Finite Element Method, vol. 1, ch. 8
TAVRIN_API void shapeFunctions(CellType type, const Reference& at, std::span<double> weights);

/// The derivatives of the weights by r, s and t.
TAVRIN_API void shapeDerivatives(CellType type, const Reference& at,
                                 std::span<std::array<double, 3>> derivatives);

/// Where vertex k of a cell lies in its reference coordinates.
TAVRIN_API Reference vertexReference(CellType type, std::size_t k);

/// The centroid of the reference cell.
TAVRIN_API Reference centerReference(CellType type);

/// How far a reference point lies outside the cell, in reference coordinates; negative inside.
TAVRIN_API double distanceOutside(CellType type, const Reference& at);

}
