#include <tavrin/domain/CellType.hpp>

#include <array>

namespace tavrin
{

namespace
{

struct Properties
{
    std::string_view name;
    std::size_t vertices;
    std::size_t dimension;
    CellType linear;
};

using enum CellType;

constexpr std::array<Properties, numCellTypes> properties{{
    {"Points", 1, 0, Points},
    {"Lines", 2, 1, Lines},
    {"Triangles", 3, 2, Triangles},
    {"Quads", 4, 2, Quads},
    {"Tetrahedra", 4, 3, Tetrahedra},
    {"Pyramids", 5, 3, Pyramids},
    {"Prisms", 6, 3, Prisms},
    {"Hexahedra", 8, 3, Hexahedra},
    {"Subparametric Quadratic Line", 3, 1, Lines},
    {"Subparametric Quadratic Triangle", 6, 2, Triangles},
    {"Subparametric Quadratic Quad", 8, 2, Quads},
    {"Subparametric Quadratic Tetrahedron", 10, 3, Tetrahedra},
    {"Subparametric Quadratic Hexahedron", 20, 3, Hexahedra},
    {"Quadratic Line", 3, 1, Lines},
    {"Quadratic Triangle", 6, 2, Triangles},
    {"Quadratic Quad", 8, 2, Quads},
    {"Quadratic Tetrahedron", 10, 3, Tetrahedra},
    {"Quadratic Hexahedron", 20, 3, Hexahedra},
    {"INVALID", 0, 0, Invalid},
    {"Quadratic Pyramid", 13, 3, Pyramids},
    {"Quadratic Prism", 15, 3, Prisms},
    {"Biquadratic Quad", 9, 2, Quads},
    {"Triquadratic Hexahedron", 27, 3, Hexahedra},
}};

const Properties& propertiesOf(CellType type)
{
    return properties.at(static_cast<std::size_t>(type));
}

}

std::string_view nameOf(CellType type)
{
    return propertiesOf(type).name;
}

std::size_t numVerticesOf(CellType type)
{
    return propertiesOf(type).vertices;
}

std::size_t dimensionOf(CellType type)
{
    return propertiesOf(type).dimension;
}

CellType linearTypeOf(CellType type)
{
    return propertiesOf(type).linear;
}

}
