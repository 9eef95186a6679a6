#include <tavrin/location/ShapeTable.hpp>

#include <cassert>

namespace tavrin
{

Reference collapsedReference(CellType type, const Reference& inCube)
{
    const auto& [a, b, c] = inCube;
    switch (shapeOf(type))
    {
    case CellShape::Triangle:
    case CellShape::Prism:
        return {a * (1.0 - b), b, c};
    case CellShape::Tetrahedron:
        return {a * (1.0 - b) * (1.0 - c), b * (1.0 - c), c};
    case CellShape::Pyramid:
        return {a * (1.0 - c), b * (1.0 - c), c};
    case CellShape::Point:
    case CellShape::Line:
    case CellShape::Quad:
    case CellShape::Hexahedron:
        break;
    }
    return inCube;
}

namespace
{

/// Over the cube every shape function is a polynomial of second degree in each coordinate. Its values at 0,
/// 1/2 and 1 determine its Bernstein coefficients: those at the ends are the values there, the middle one
/// is twice the value in the middle less the mean of the ends.
std::vector<double> controlWeightsOf(CellType type)
{
    const std::size_t vertices = numVerticesOf(type);
    const std::size_t dimension = dimensionOf(type);
    constexpr std::array<std::size_t, 4> pointsByDimension{1, 3, 9, 27};
    const std::size_t points = pointsByDimension[dimension];
    std::vector<double> weights(points * vertices);
    for (std::size_t i = 0; i < points; ++i)
    {
        const auto half = [](std::size_t number) { return 0.5 * static_cast<double>(number % 3); };
        shapeFunctions(type, collapsedReference(type, {half(i), half(i / 3), half(i / 9)}),
                       std::span(weights).subspan(i * vertices, vertices));
    }
    for (std::size_t stride = 1; stride < points; stride *= 3)
        for (std::size_t i = 0; i < points; ++i)
            for (std::size_t k = 0; k < vertices && i / stride % 3 == 1; ++k)
            {
                const double ends =
                    weights[(i - stride) * vertices + k] + weights[(i + stride) * vertices + k];
                double& middle = weights[i * vertices + k];
                middle = 2.0 * middle - 0.5 * ends;
            }
    return weights;
}

ShapeTable makeTable(CellType type)
{
    ShapeTable table;
    table.numVertices = numVerticesOf(type);
    for (std::size_t k = 0; k < table.numVertices; ++k)
        table.vertexReferences.push_back(vertexReference(type, k));
    table.center = centerReference(type);
    table.centerWeights.resize(table.numVertices);
    shapeFunctions(type, table.center, table.centerWeights);
    table.centerDerivatives.resize(table.numVertices);
    shapeDerivatives(type, table.center, table.centerDerivatives);
    table.controlWeights = controlWeightsOf(type);
    return table;
}

std::vector<ShapeTable> makeTables()
{
    std::vector<ShapeTable> tables;
    for (std::size_t type = 0; type < numCellTypes; ++type)
        tables.push_back(static_cast<CellType>(type) == CellType::Invalid
                             ? ShapeTable()
                             : makeTable(static_cast<CellType>(type)));
    return tables;
}

}

const ShapeTable& shapeTableOf(CellType type)
{
    assert(type != CellType::Invalid);
    static const std::vector<ShapeTable> tables = makeTables();
    return tables[static_cast<std::size_t>(type)];
}

}
