#include <tavrin/location/ShapeFunctions.hpp>

#include <algorithm>
#include <cassert>

namespace tavrin
{

namespace
{

using enum CellShape;

/// A number with its derivatives by r, s and t: differentiates formulas by evaluating them.
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

/// coordinate / height in a pyramid. Near the apex, where the quotient of points outside of the cell
/// diverges, it is limited to the neighborhood of the range 0 ... 1 that it has inside.
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

/// The height below the apex of a pyramid that stands for 0, so that it can be a divisor. Beyond the apex
/// heights are negative; the weights sum to 1 there, too.
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

/// The linear functions of both ends of the interval 0 ... 1 and the quadratic one of its midpoint.
template<typename Number>
struct Along
{
    explicit Along(const Number& x) : ends{1.0 - x, x}, middle(4.0 * x * (1.0 - x)) {}

    std::array<Number, 2> ends;
    Number middle;

    /// The quadratic Lagrange polynomial of the start, the middle or the end.
    Number lagrange(std::size_t i) const
    {
        return i == 1 ? middle : ends[i / 2] * (2.0 * ends[i / 2] - 1.0);
    }
};

/// The weights of the vertices of a linear cell.
template<typename Number>
void linearFunctions(CellShape shape, const Coordinates<Number>& at, Number* weights)
{
    const auto& [r, s, t] = at;
    switch (shape)
    {
    case Point:
        weights[0] = 1.0;
        break;
    case Line:
        weights[0] = 1.0 - r;
        weights[1] = r;
        break;
    case Triangle:
        weights[0] = 1.0 - r - s;
        weights[1] = r;
        weights[2] = s;
        break;
    case Tetrahedron:
        weights[0] = 1.0 - r - s - t;
        weights[1] = r;
        weights[2] = s;
        weights[3] = t;
        break;
    case Prism:
        linearFunctions(Triangle, at, weights);
        for (std::size_t k = 0; k < 3; ++k)
        {
            weights[k + 3] = weights[k] * t;
            weights[k] = weights[k] * (1.0 - t);
        }
        break;
    case Pyramid:
    {
        const Number height = heightBelowApex(t);
        linearFunctions(Quad, Coordinates<Number>{quotient(r, height), quotient(s, height), t},
                        weights);
        for (std::size_t k = 0; k < 4; ++k)
            weights[k] = weights[k] * height;
        weights[4] = t;
        break;
    }
    case Quad:
    case Hexahedron:
    {
        const std::array<Number, 4> quad{(1.0 - r) * (1.0 - s), r * (1.0 - s), r * s,
                                         (1.0 - r) * s};
        const bool isQuad = shape == Quad;
        for (std::size_t k = 0; k < 4; ++k)
            weights[k] = isQuad ? quad[k] : quad[k] * (1.0 - t);
        for (std::size_t k = 0; k < 4 && !isQuad; ++k)
            weights[k + 4] = quad[k] * t;
        break;
    }
    }
}

/// Products of the functions of r, s and t that belong to a vertex of a quad or hexahedron: linear
/// ones for its coordinates 0 and 1, the quadratic one of the midpoint for 1/2.
template<typename Number>
Number serendipityFunction(const std::array<Along<Number>, 3>& along, const HalfReference& vertex,
                           std::size_t dimension)
{
    Number product = 1.0;
    for (std::size_t axis = 0; axis < dimension; ++axis)
        product =
            product * (vertex[axis] == 1 ? along[axis].middle : along[axis].ends[vertex[axis] / 2]);
    return product;
}

/// The functions of the edges' midpoints, in the order of the edges of a quadratic type.
template<typename Number>
void edgeFunctions(CellType type, const Coordinates<Number>& at, Number* midpoints)
{
    const auto& [r, s, t] = at;
    const CellShape shape = shapeOf(type);
    const auto edges = edgesOf(type);
    switch (shape)
    {
    case Point:
        break;
    case Line:
    case Triangle:
    case Tetrahedron:
    {
        std::array<Number, 4> corners;
        linearFunctions(shape, at, corners.data());
        for (const auto& [a, b] : edges)
            *midpoints++ = 4.0 * corners[a] * corners[b];
        break;
    }
    case Prism:
    {
        std::array<Number, 3> triangle;
        edgeFunctions(CellType::QuadraticTriangle, at, triangle.data());
        for (std::size_t k = 0; k < 3; ++k)
        {
            midpoints[k] = triangle[k] * (1.0 - t);
            midpoints[k + 3] = triangle[k] * t;
        }
        linearFunctions(Triangle, at, triangle.data());
        for (std::size_t k = 0; k < 3; ++k)
            midpoints[k + 6] = 4.0 * t * (1.0 - t) * triangle[k];
        break;
    }
    case Pyramid:
    {
        const Number height = heightBelowApex(t);
        const Coordinates<Number> onBase{quotient(r, height), quotient(s, height), t};
        edgeFunctions(CellType::QuadraticQuad, onBase, midpoints);
        linearFunctions(Quad, onBase, midpoints + 4);
        for (std::size_t k = 0; k < 4; ++k)
        {
            midpoints[k] = midpoints[k] * height * height;
            midpoints[k + 4] = 4.0 * t * height * midpoints[k + 4];
        }
        break;
    }
    case Quad:
    case Hexahedron:
    {
        const std::array along{Along<Number>(r), Along<Number>(s), Along<Number>(t)};
        const auto corners = numVerticesOf(linearTypeOf(type));
        for (const HalfReference& vertex : verticesOf(type).subspan(corners, edges.size()))
            *midpoints++ = serendipityFunction(along, vertex, dimensionOf(type));
    }
    }
}

template<typename Number>
void evaluate(CellType type, const Coordinates<Number>& at, Number* weights)
{
    if (type == CellType::BiquadraticQuad || type == CellType::TriquadraticHexahedron)
    {
        const std::array along{Along<Number>(at[0]), Along<Number>(at[1]), Along<Number>(at[2])};
        for (const auto& [i, j, k] : verticesOf(type))
        {
            *weights = along[0].lagrange(i) * along[1].lagrange(j);
            if (type == CellType::TriquadraticHexahedron)
                *weights = *weights * along[2].lagrange(k);
            ++weights;
        }
        return;
    }
    linearFunctions(shapeOf(type), at, weights);
    const CellType linear = linearTypeOf(type);
    if (type == linear)
        return;
    Number* const midpoints = weights + numVerticesOf(linear);
    edgeFunctions(type, at, midpoints);
    const auto edges = edgesOf(type);
    for (std::size_t e = 0; e < edges.size(); ++e)
        for (const std::size_t corner : edges[e])
            weights[corner] = weights[corner] - 0.5 * midpoints[e];
}

}

void shapeFunctions(CellType type, const Reference& at, std::span<double> weights)
{
    assert(weights.size() >= numVerticesOf(type));
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
    Reference reference;
    std::ranges::transform(verticesOf(type)[k], reference.begin(),
                           [](unsigned char half) { return 0.5 * half; });
    return reference;
}

Reference centerReference(CellType type)
{
    switch (shapeOf(type))
    {
    case Point:
        return {0.0, 0.0, 0.0};
    case Line:
        return {0.5, 0.0, 0.0};
    case Triangle:
        return {1.0 / 3.0, 1.0 / 3.0, 0.0};
    case Quad:
        return {0.5, 0.5, 0.0};
    case Tetrahedron:
        return {0.25, 0.25, 0.25};
    case Pyramid:
        return {0.375, 0.375, 0.25};
    case Prism:
        return {1.0 / 3.0, 1.0 / 3.0, 0.5};
    case Hexahedron:
        return {0.5, 0.5, 0.5};
    }
    return {};
}

double distanceOutside(CellType type, const Reference& at)
{
    const auto& [r, s, t] = at;
    switch (shapeOf(type))
    {
    case Point:
        return 0.0;
    case Line:
        return std::max(-r, r - 1.0);
    case Triangle:
        return std::max({-r, -s, r + s - 1.0});
    case Quad:
        return std::max({-r, -s, r - 1.0, s - 1.0});
    case Tetrahedron:
        return std::max({-r, -s, -t, r + s + t - 1.0});
    case Pyramid:
        return std::max({-r, -s, -t, r + t - 1.0, s + t - 1.0});
    case Prism:
        return std::max({-r, -s, r + s - 1.0, -t, t - 1.0});
    case Hexahedron:
        return std::max({-r, -s, -t, r - 1.0, s - 1.0, t - 1.0});
    }
    return 0.0;
}

}
