#pragma once

#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/value/Tensor.hpp>

#include <vector>

namespace tavrin
{

/// What can be known of a cell type before its vertices have positions.
struct ShapeTable
{
    std::size_t numVertices = 0;
    std::vector<Reference> vertexReferences;

    Reference center{};
    std::vector<double> centerWeights;
    std::vector<std::array<double, 3>> centerDerivatives;

    /// The weights of the vertices in control points, row after row. The control points are those of
    /// Bernstein's form, three along each axis of a cube that may be collapsed to the cell; the cell
    /// lies in their convex hull.
    std::vector<double> controlWeights;

    std::size_t numControlPoints() const { return controlWeights.size() / numVertices; }

    /// Control point i, in the cube, of the cell whose vertices are at these positions.
    template<std::size_t D>
    Tensor<double, D> controlPoint(std::size_t i, const Tensor<double, D>* vertices) const
    {
        Tensor<double, D> point{};
        for (std::size_t k = 0; k < numVertices; ++k)
            point += controlWeights[i * numVertices + k] * vertices[k];
        return point;
    }
};

/// The point of the reference cell at a point of the unit cube, some of whose sides collapse.
Reference collapsedReference(CellType type, const Reference& inCube);

/// The table of a type that is not `Invalid`.
const ShapeTable& shapeTableOf(CellType type);

}
