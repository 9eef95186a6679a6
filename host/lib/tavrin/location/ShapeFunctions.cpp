#include <tavrin/location/ShapeFunctions.hpp>

#include <algorithm>
#include <stdexcept>

namespace tavrin
{

namespace
{

using enum CellType;

/// A number with its derivatives by r, s and t, so that each formula stands here once.
struct Dual
{
    double value = 0.0;
    std::array<double, 3> slope{};

    Dual() = default;
    Dual(double number) : value(number) {}

    friend Dual operator-(Dual a, const Dual& b)
    {
        a.value -= b.value;
        for (std::size_t i = 0; i < 3; ++i)
            a.slope[i] -= b.slope[i];
        return a;
    }
    friend Dual operator*(const Dual& a, const Dual& b)
    {
        Dual product(a.value * b.value);
        for (std::size_t i = 0; i < 3; ++i)
            product.slope[i] = a.slope[i] * b.value + a.value * b.slope[i];
        return product;
    }
};

/// coordinate / height, as it is inside a pyramid: where a position is about to leave through the
/// apex the quotient is kept from running away.
double quotient(double coordinate, double height)
{
    return std::clamp(coordinate / height, -1.0, 2.0);
}

Dual quotient(const Dual& coordinate, const Dual& height)
{
    Dual result(quotient(coordinate.value, height.value));
    for (std::size_t i = 0; i < 3; ++i)
        result.slope[i] = (coordinate.slope[i] - result.value * height.slope[i]) / height.value;
    return result;
}

/// At least this height is left at the apex of a pyramid, so that it can be divided by. Beyond the apex
/// heights are negative, and the weights still sum to 1.
constexpr double leastHeight = 1e-150;

double heightBelowApex(double t)
{
    return t == 1.0 ? leastHeight : 1.0 - t;
}

Dual heightBelowApex(const Dual& t)
{
    Dual height = 1.0 - t;
    height.value = heightBelowApex(t.value);
    return height;
}

template<typename Number>
using Coordinates = std::array<Number, 3>;

/// The two linear functions of a coordinate from 0 to 1, and the quadratic one of its middle.
template<typename Number>
struct Along
{
    explicit Along(const Number& x) : ends{1.0 - x, x}, middle(4.0 * x * (1.0 - x)) {}

    std::array<Number, 2> ends;
    Number middle;

    /// The quadratic function of the start, the middle and the end.
    Number lagrange(std::size_t i) const
    {
        return i == 1 ? middle : ends[i / 2] * (2.0 * ends[i / 2] - 1.0);
    }
};

struct Edge
{
    std::size_t a;
    std::size_t b;
};

constexpr std::array<Edge, 1> lineEdges{{{0, 1}}};
constexpr std::array<Edge, 3> triangleEdges{{{0, 1}, {1, 2}, {2, 0}}};
constexpr std::array<Edge, 4> quadEdges{{{0, 1}, {1, 2}, {2, 3}, {3, 0}}};
constexpr std::array<Edge, 6> tetrahedronEdges{{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}};
constexpr std::array<Edge, 8> pyramidEdges{
    {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}};
constexpr std::array<Edge, 9> prismEdges{
    {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}};
constexpr std::array<Edge, 12> hexahedronEdges{{{0, 1},
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
                                                {3, 7}}};

std::span<const Edge> edgesOf(CellType linear)
{
    switch (linear)
    {
    case Lines:
        return lineEdges;
    case Triangles:
        return triangleEdges;
    case Quads:
        return quadEdges;
    case Tetrahedra:
        return tetrahedronEdges;
    case Pyramids:
        return pyramidEdges;
    case Prisms:
        return prismEdges;
    case Hexahedra:
        return hexahedronEdges;
    default:
        return {};
    }
}

/// Where the corners of quads and hexahedra lie along r, s and t.
constexpr std::array<std::array<std::size_t, 3>, 8> cornerOfCube{
    {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};

/// The weights of the linear cell with the same corners.
template<typename Number>
void linearFunctions(CellType linear, const Coordinates<Number>& at, Number* weights)
{
    const auto& [r, s, t] = at;
    switch (linear)
    {
    case Points:
        weights[0] = 1.0;
        break;
    case Lines:
        weights[0] = 1.0 - r;
        weights[1] = r;
        break;
    case Triangles:
        weights[0] = 1.0 - r - s;
        weights[1] = r;
        weights[2] = s;
        break;
    case Tetrahedra:
        weights[0] = 1.0 - r - s - t;
        weights[1] = r;
        weights[2] = s;
        weights[3] = t;
        break;
    case Prisms:
        linearFunctions(Triangles, at, weights);
        for (std::size_t k = 0; k < 3; ++k)
        {
            weights[k + 3] = weights[k] * t;
            weights[k] = weights[k] * (1.0 - t);
        }
        break;
    case Pyramids:
    {
        const Number height = heightBelowApex(t);
        linearFunctions(Quads, Coordinates<Number>{quotient(r, height), quotient(s, height), t},
                        weights);
        for (std::size_t k = 0; k < 4; ++k)
            weights[k] = weights[k] * height;
        weights[4] = t;
        break;
    }
    case Quads:
    case Hexahedra:
    {
        const std::array<Number, 4> quad{(1.0 - r) * (1.0 - s), r * (1.0 - s), r * s,
                                         (1.0 - r) * s};
        const bool isQuad = linear == Quads;
        for (std::size_t k = 0; k < 4; ++k)
            weights[k] = isQuad ? quad[k] : quad[k] * (1.0 - t);
        for (std::size_t k = 0; k < 4 && !isQuad; ++k)
            weights[k + 4] = quad[k] * t;
        break;
    }
    default:
        throw std::logic_error("a cell of no type has no shape functions");
    }
}

/// The functions of the middles of the edges, in the order of the edges.
template<typename Number>
void edgeFunctions(CellType linear, const Coordinates<Number>& at, Number* middles)
{
    const auto& [r, s, t] = at;
    switch (linear)
    {
    case Lines:
    case Triangles:
    case Tetrahedra:
    {
        std::array<Number, 4> corners;
        linearFunctions(linear, at, corners.data());
        for (const Edge& edge : edgesOf(linear))
            *middles++ = 4.0 * corners[edge.a] * corners[edge.b];
        break;
    }
    case Prisms:
    {
        std::array<Number, 3> triangle;
        edgeFunctions(Triangles, at, triangle.data());
        for (std::size_t k = 0; k < 3; ++k)
        {
            middles[k] = triangle[k] * (1.0 - t);
            middles[k + 3] = triangle[k] * t;
        }
        linearFunctions(Triangles, at, triangle.data());
        for (std::size_t k = 0; k < 3; ++k)
            middles[k + 6] = 4.0 * t * (1.0 - t) * triangle[k];
        break;
    }
    case Pyramids:
    {
        const Number height = heightBelowApex(t);
        const Coordinates<Number> onBase{quotient(r, height), quotient(s, height), t};
        edgeFunctions(Quads, onBase, middles);
        linearFunctions(Quads, onBase, middles + 4);
        for (std::size_t k = 0; k < 4; ++k)
        {
            middles[k] = middles[k] * height * height;
            middles[k + 4] = 4.0 * t * height * middles[k + 4];
        }
        break;
    }
    default:
    {
        const std::array along{Along<Number>(r), Along<Number>(s), Along<Number>(t)};
        for (const Edge& edge : edgesOf(linear))
        {
            Number product = 1.0;
            for (std::size_t axis = 0; axis < dimensionOf(linear); ++axis)
            {
                const std::size_t a = cornerOfCube[edge.a][axis];
                const std::size_t b = cornerOfCube[edge.b][axis];
                product = product * (a == b ? along[axis].ends[a] : along[axis].middle);
            }
            *middles++ = product;
        }
    }
    }
}

/// Where the vertices of the triquadratic hexahedron lie along r, s and t, in halves; the first nine
/// but for the order are those of the biquadratic quad.
constexpr std::array<std::array<std::size_t, 3>, 27> vertexOfTriquadratic{
    {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {0, 0, 2}, {2, 0, 2}, {2, 2, 2},
     {0, 2, 2}, {1, 0, 0}, {2, 1, 0}, {1, 2, 0}, {0, 1, 0}, {1, 0, 2}, {2, 1, 2},
     {1, 2, 2}, {0, 1, 2}, {0, 0, 1}, {2, 0, 1}, {2, 2, 1}, {0, 2, 1}, {0, 1, 1},
     {2, 1, 1}, {1, 0, 1}, {1, 2, 1}, {1, 1, 0}, {1, 1, 2}, {1, 1, 1}}};
constexpr std::array<std::array<std::size_t, 2>, 9> vertexOfBiquadratic{
    {{0, 0}, {2, 0}, {2, 2}, {0, 2}, {1, 0}, {2, 1}, {1, 2}, {0, 1}, {1, 1}}};

template<typename Number>
void evaluate(CellType type, const Coordinates<Number>& at, Number* weights)
{
    const CellType linear = linearTypeOf(type);
    if (type == BiquadraticQuad || type == TriquadraticHexahedron)
    {
        const std::array along{Along<Number>(at[0]), Along<Number>(at[1]), Along<Number>(at[2])};
        if (type == BiquadraticQuad)
            for (const auto& [i, j] : vertexOfBiquadratic)
                *weights++ = along[0].lagrange(i) * along[1].lagrange(j);
        else
            for (const auto& [i, j, k] : vertexOfTriquadratic)
                *weights++ = along[0].lagrange(i) * along[1].lagrange(j) * along[2].lagrange(k);
        return;
    }
    linearFunctions(linear, at, weights);
    if (type == linear)
        return;
    Number* const middles = weights + numVerticesOf(linear);
    edgeFunctions(linear, at, middles);
    const auto edges = edgesOf(linear);
    for (std::size_t e = 0; e < edges.size(); ++e)
    {
        weights[edges[e].a] = weights[edges[e].a] - 0.5 * middles[e];
        weights[edges[e].b] = weights[edges[e].b] - 0.5 * middles[e];
    }
}

}

void shapeFunctions(CellType type, const Reference& at, std::span<double> weights)
{
    evaluate<double>(type, at, weights.data());
}

void shapeDerivatives(CellType type, const Reference& at,
                      std::span<std::array<double, 3>> derivatives)
{
    Coordinates<Dual> coordinates;
    for (std::size_t i = 0; i < 3; ++i)
    {
        coordinates[i].value = at[i];
        coordinates[i].slope[i] = 1.0;
    }
    std::array<Dual, maximumVertices> weights;
    evaluate<Dual>(type, coordinates, weights.data());
    for (std::size_t k = 0; k < numVerticesOf(type); ++k)
        derivatives[k] = weights[k].slope;
}

Reference vertexReference(CellType type, std::size_t k)
{
    const CellType linear = linearTypeOf(type);
    const auto halves = [](const auto& numbers)
    {
        Reference reference{};
        std::ranges::transform(numbers, reference.begin(),
                               [](std::size_t number)
                               { return 0.5 * static_cast<double>(number); });
        return reference;
    };
    if (type == BiquadraticQuad)
        return halves(vertexOfBiquadratic[k]);
    if (type == TriquadraticHexahedron)
        return halves(vertexOfTriquadratic[k]);
    const std::size_t corners = numVerticesOf(linear);
    if (k >= corners)
    {
        const Edge edge = edgesOf(linear)[k - corners];
        Reference middle = vertexReference(linear, edge.a);
        const Reference end = vertexReference(linear, edge.b);
        for (std::size_t i = 0; i < 3; ++i)
            middle[i] = 0.5 * (middle[i] + end[i]);
        return middle;
    }
    constexpr std::array<Reference, 6> triangular{
        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}};
    switch (linear)
    {
    case Triangles:
    case Tetrahedra:
    case Prisms:
        return triangular[k];
    case Pyramids:
        if (k == 4)
            return {0, 0, 1};
        [[fallthrough]];
    default:
        return {static_cast<double>(cornerOfCube[k][0]), static_cast<double>(cornerOfCube[k][1]),
                static_cast<double>(cornerOfCube[k][2])};
    }
}

Reference centerReference(CellType type)
{
    switch (linearTypeOf(type))
    {
    case Triangles:
        return {1.0 / 3.0, 1.0 / 3.0, 0.0};
    case Tetrahedra:
        return {0.25, 0.25, 0.25};
    case Prisms:
        return {1.0 / 3.0, 1.0 / 3.0, 0.5};
    case Pyramids:
        return {0.375, 0.375, 0.25};
    default:
        return {0.5, 0.5, 0.5};
    }
}

double distanceOutside(CellType type, const Reference& at)
{
    const auto& [r, s, t] = at;
    switch (linearTypeOf(type))
    {
    case Points:
        return 0.0;
    case Lines:
        return std::max(-r, r - 1.0);
    case Triangles:
        return std::max({-r, -s, r + s - 1.0});
    case Quads:
        return std::max({-r, -s, r - 1.0, s - 1.0});
    case Tetrahedra:
        return std::max({-r, -s, -t, r + s + t - 1.0});
    case Prisms:
        return std::max({-r, -s, r + s - 1.0, -t, t - 1.0});
    case Pyramids:
        return std::max({-r, -s, -t, r + t - 1.0, s + t - 1.0});
    default:
        return std::max({-r, -s, -t, r - 1.0, s - 1.0, t - 1.0});
    }
}

}
