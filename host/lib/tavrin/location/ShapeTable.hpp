#pragma once

#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/value/Tensor.hpp>

#include <vector>

namespace tavrin
{

/// Properties of a cell type that do not depend on the positions of vertices.
struct ShapeTable
{
    std::size_t numVertices = 0;
    std::vector<Reference> vertexReferences;

    Reference center{};
    std::vector<double> centerWeights;
    std::vector<std::array<double, 3>> centerDerivatives;

    /// The weights of the vertices in the control points, row after row. Control points are those of the
    /// Bernstein form over the cube that the cell is a collapsed image of, three along each axis. The
    /// cell lies in their convex hull.
    std::vector<double> controlWeights;

    std::size_t numControlPoints() const { return controlWeights.size() / numVertices; }

    /// Control point i of a cell with these vertices.
    template<std::size_t D>
    Tensor<double, D> controlPoint(std::size_t i, const Tensor<double, D>* vertices) const
    {
        Tensor<double, D> point{};
        for (std::size_t k = 0; k < numVertices; ++k)
            point += controlWeights[i * numVertices + k] * vertices[k];
        return point;
    }
};

/// The image in the reference cell of a point of the unit cube, some of whose sides collapse.
Reference collapsedReference(CellType type, const Reference& inCube);

/// The table of a type that is not `Invalid`.
const ShapeTable& shapeTableOf(CellType type);

}
