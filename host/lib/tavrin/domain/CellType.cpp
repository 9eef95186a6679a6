#include <tavrin/domain/CellType.hpp>

#include <cassert>
#include <initializer_list>

namespace tavrin
{

namespace
{

using enum CellType;

/// All that is known of a cell type.
struct Properties
{
    std::string_view name;
    CellShape shape = CellShape::Point;
    CellType linear = Invalid;
    std::size_t dimension = 0;
    std::size_t numVertices = 0;
    std::array<HalfReference, maximumVertices> vertices{};
    std::size_t numEdges = 0;
    std::array<CellEdge, 12> edges{};

    constexpr void add(const HalfReference& vertex) { vertices[numVertices++] = vertex; }
};

constexpr Properties linear(std::string_view name, CellType type, CellShape shape,
                            std::size_t dimension, std::initializer_list<HalfReference> corners,
                            std::initializer_list<CellEdge> edges)
{
    Properties result{.name = name, .shape = shape, .linear = type, .dimension = dimension};
    for (const HalfReference& corner : corners)
        result.add(corner);
    for (const CellEdge& edge : edges)
        result.edges[result.numEdges++] = edge;
    return result;
}

constexpr auto point = linear("Points", Points, CellShape::Point, 0, {{0, 0, 0}}, {});
constexpr auto line = linear("Lines", Lines, CellShape::Line, 1, {{0, 0, 0}, {2, 0, 0}}, {{0, 1}});
constexpr auto triangle = linear("Triangles", Triangles, CellShape::Triangle, 2,
                                 {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {{0, 1}, {1, 2}, {2, 0}});
constexpr auto quad =
    linear("Quads", Quads, CellShape::Quad, 2, {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}},
           {{0, 1}, {1, 2}, {2, 3}, {3, 0}});
constexpr auto tetrahedron = linear("Tetrahedra", Tetrahedra, CellShape::Tetrahedron, 3,
                                    {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}},
                                    {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}});
constexpr auto pyramid = linear("Pyramids", Pyramids, CellShape::Pyramid, 3,
                                {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {0, 0, 2}},
                                {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}});
constexpr auto prism =
    linear("Prisms", Prisms, CellShape::Prism, 3,
           {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {2, 0, 2}, {0, 2, 2}},
           {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}});
constexpr auto hexahedron =
    linear("Hexahedra", Hexahedra, CellShape::Hexahedron, 3,
           {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {0, 0, 2}, {2, 0, 2}, {2, 2, 2}, {0, 2, 2}},
           {{0, 1},
            {1, 2},
            {2, 3},
            {3, 0},
            {4, 5},
            {5, 6},
            {6, 7},
            {7, 4},
            {0, 4},
            {1, 5},
            {2, 6},
            {3, 7}});

/// The quadratic type with the corners and edges of a linear one, and inner vertices if there are any.
constexpr Properties quadratic(std::string_view name, const Properties& base,
                               std::initializer_list<HalfReference> inner = {})
{
    Properties result = base;
    result.name = name;
    for (std::size_t e = 0; e < base.numEdges; ++e)
    {
        const auto& [a, b] = base.edges[e];
        HalfReference middle{};
        for (std::size_t i = 0; i < middle.size(); ++i)
            middle[i] = static_cast<unsigned char>((base.vertices[a][i] + base.vertices[b][i]) / 2);
        result.add(middle);
    }
    for (const HalfReference& vertex : inner)
        result.add(vertex);
    return result;
}

/// In the order of the enumeration.
constexpr std::array<Properties, numCellTypes> properties{{
    point,
    line,
    triangle,
    quad,
    tetrahedron,
    pyramid,
    prism,
    hexahedron,
    quadratic("Subparametric Quadratic Line", line),
    quadratic("Subparametric Quadratic Triangle", triangle),
    quadratic("Subparametric Quadratic Quad", quad),
    quadratic("Subparametric Quadratic Tetrahedron", tetrahedron),
    quadratic("Subparametric Quadratic Hexahedron", hexahedron),
    quadratic("Quadratic Line", line),
    quadratic("Quadratic Triangle", triangle),
    quadratic("Quadratic Quad", quad),
    quadratic("Quadratic Tetrahedron", tetrahedron),
    quadratic("Quadratic Hexahedron", hexahedron),
    {.name = "INVALID"},
    quadratic("Quadratic Pyramid", pyramid),
    quadratic("Quadratic Prism", prism),
    quadratic("Biquadratic Quad", quad, {{1, 1, 0}}),
    quadratic("Triquadratic Hexahedron", hexahedron,
              {{0, 1, 1}, {2, 1, 1}, {1, 0, 1}, {1, 2, 1}, {1, 1, 0}, {1, 1, 2}, {1, 1, 1}}),
}};

static_assert(properties[static_cast<std::size_t>(QuadraticHexahedron)].numVertices == 20);
static_assert(properties[static_cast<std::size_t>(QuadraticPrism)].numVertices == 15);
static_assert(properties[static_cast<std::size_t>(TriquadraticHexahedron)].numVertices ==
              maximumVertices);

const Properties& propertiesOf(CellType type)
{
    return properties.at(static_cast<std::size_t>(type));
}

}

std::string_view nameOf(CellType type)
{
    return propertiesOf(type).name;
}

CellShape shapeOf(CellType type)
{
    assert(type != Invalid);
    return propertiesOf(type).shape;
}

std::size_t numVerticesOf(CellType type)
{
    return propertiesOf(type).numVertices;
}

std::size_t dimensionOf(CellType type)
{
    return propertiesOf(type).dimension;
}

CellType linearTypeOf(CellType type)
{
    return propertiesOf(type).linear;
}

std::span<const CellEdge> edgesOf(CellType type)
{
    const Properties& known = propertiesOf(type);
    return std::span(known.edges).first(known.numEdges);
}

std::span<const HalfReference> verticesOf(CellType type)
{
    const Properties& known = propertiesOf(type);
    return std::span(known.vertices).first(known.numVertices);
}

}
