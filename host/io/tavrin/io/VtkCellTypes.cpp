#include <tavrin/io/VtkCellTypes.hpp>

#include <vtkCellType.h>

#include <algorithm>
#include <array>

namespace tavrin::io
{

namespace
{

struct Pair
{
    CellType type;
    int vtkType;
};

using enum CellType;

// The cell types of a pair number their vertices in the same way. For wedges this is the numbering of
// VTK's shape functions: triangle 0 1 2, then 3 4 5 opposite. VTK's documents disagree about the
// direction of the normal of 0 1 2, which has no effect on interpolation.
constexpr std::array pairs{
    Pair{Points, VTK_VERTEX},
    Pair{Lines, VTK_LINE},
    Pair{Triangles, VTK_TRIANGLE},
    Pair{Quads, VTK_QUAD},
    Pair{Tetrahedra, VTK_TETRA},
    Pair{Pyramids, VTK_PYRAMID},
    Pair{Prisms, VTK_WEDGE},
    Pair{Hexahedra, VTK_HEXAHEDRON},
    Pair{QuadraticLine, VTK_QUADRATIC_EDGE},
    Pair{QuadraticTriangle, VTK_QUADRATIC_TRIANGLE},
    Pair{QuadraticQuad, VTK_QUADRATIC_QUAD},
    Pair{QuadraticTetrahedron, VTK_QUADRATIC_TETRA},
    Pair{QuadraticHexahedron, VTK_QUADRATIC_HEXAHEDRON},
    Pair{QuadraticPyramid, VTK_QUADRATIC_PYRAMID},
    Pair{QuadraticPrism, VTK_QUADRATIC_WEDGE},
    Pair{BiquadraticQuad, VTK_BIQUADRATIC_QUAD},
    Pair{TriquadraticHexahedron, VTK_TRIQUADRATIC_HEXAHEDRON},
    Pair{Invalid, VTK_EMPTY_CELL},
};

/// Further cell types that are written with the number of a cell with the same vertices.
constexpr std::array subparametric{
    Pair{SubparametricQuadraticLine, VTK_QUADRATIC_EDGE},
    Pair{SubparametricQuadraticTriangle, VTK_QUADRATIC_TRIANGLE},
    Pair{SubparametricQuadraticQuad, VTK_QUADRATIC_QUAD},
    Pair{SubparametricQuadraticTetrahedron, VTK_QUADRATIC_TETRA},
    Pair{SubparametricQuadraticHexahedron, VTK_QUADRATIC_HEXAHEDRON},
};

}

std::optional<CellType> cellTypeOf(int vtkType)
{
    const auto found = std::ranges::find(pairs, vtkType, &Pair::vtkType);
    return found == pairs.end() ? std::nullopt : std::optional(found->type);
}

int vtkTypeOf(CellType type)
{
    if (const auto found = std::ranges::find(pairs, type, &Pair::type); found != pairs.end())
        return found->vtkType;
    const auto found = std::ranges::find(subparametric, type, &Pair::type);
    return found == subparametric.end() ? VTK_EMPTY_CELL : found->vtkType;
}

}
