#pragma once

#include <tavrin/domain/CellType.hpp>
#include <tavrin/location/Inverse.hpp>

#include <array>

namespace tavrin
{

/// The terms of a multilinear map in products of different reference coordinates.
template<std::size_t D, typename Number = double>
struct ProductTerms
{
    using Position = Tensor<Number, D>;

    /// The factors of uv, vw, wu and uvw; in the plane that of uv alone.
    std::array<Position, D == 3 ? 4 : 1> factors;

    Position operator()(const Position& u) const
    {
        Position sum = u[0] * u[1] * factors[0];
        if constexpr (D == 3)
            sum += u[1] * u[2] * factors[1] + u[2] * u[0] * factors[2] +
                   u[0] * u[1] * u[2] * factors[3];
        return sum;
    }

    /// Adds the derivatives of the terms to `columns`.
    void addDerivatives(const Position& u, Columns<D, Number>& columns) const
    {
        columns[0] += u[1] * factors[0];
        columns[1] += u[0] * factors[0];
        if constexpr (D == 3)
        {
            columns[0] += u[2] * factors[2] + u[1] * u[2] * factors[3];
            columns[1] += u[2] * factors[1] + u[2] * u[0] * factors[3];
            columns[2] += u[1] * factors[1] + u[0] * factors[2] + u[0] * u[1] * factors[3];
        }
    }
};

/// The map of a quad, prism or hexahedron from reference coordinates relative to its center to positions
/// relative to its first vertex: the sum of a constant, a linear term and terms in the products of
/// different coordinates.
template<std::size_t D, typename Number = double>
struct MultilinearMap
{
    using Position = Tensor<Number, D>;

    Position origin;
    Position constant;
    Columns<D, Number> linear;
    ProductTerms<D, Number> products;

    Position operator()(const Position& u) const
    {
        Position sum = constant;
        for (std::size_t i = 0; i < D; ++i)
            sum += u[i] * linear[i];
        return sum + products(u);
    }
};

template<typename Number>
MultilinearMap<2, Number> mapOfQuad(const Tensor<Number, 2>* v)
{
    using Vector = Tensor<Number, 2>;
    const Vector lower = v[1] - v[0];
    const Vector upper = v[2] - v[3];
    const Vector left = v[3] - v[0];
    const Vector right = v[2] - v[1];
    return {v[0],
            0.25 * (lower + left + (v[2] - v[0])),
            {0.5 * (lower + upper), 0.5 * (left + right)},
            {upper - lower}};
}

template<typename Number>
MultilinearMap<3, Number> mapOfPrism(const Tensor<Number, 3>* v)
{
    using Vector = Tensor<Number, 3>;
    const auto mean = [&](const Vector* triangle)
    { return ((triangle[0] - v[0]) + (triangle[1] - v[0]) + (triangle[2] - v[0])) * (1.0 / 3.0); };
    const Vector lower = mean(v);
    const Vector upper = mean(v + 3);
    const Vector lowerR = v[1] - v[0];
    const Vector upperR = v[4] - v[3];
    const Vector lowerS = v[2] - v[0];
    const Vector upperS = v[5] - v[3];
    return {v[0],
            0.5 * (lower + upper),
            {0.5 * (lowerR + upperR), 0.5 * (lowerS + upperS), upper - lower},
            {Vector{}, upperS - lowerS, upperR - lowerR, Vector{}}};
}

template<typename Number>
MultilinearMap<3, Number> mapOfHexahedron(const Tensor<Number, 3>* v)
{
    using Vector = Tensor<Number, 3>;
    // Edges along r and their starts; then sums and differences of neighbors along s and t.
    const Vector edge00 = v[1] - v[0];
    const Vector edge10 = v[2] - v[3];
    const Vector edge01 = v[5] - v[4];
    const Vector edge11 = v[6] - v[7];
    const Vector sum00 = edge00;
    const Vector sum10 = (v[3] - v[0]) + (v[2] - v[0]);
    const Vector sum01 = (v[4] - v[0]) + (v[5] - v[0]);
    const Vector sum11 = (v[7] - v[0]) + (v[6] - v[0]);
    const Vector side0 = sum10 - sum00;
    const Vector side1 = sum11 - sum01;
    const Vector layer0 = sum00 + sum10;
    const Vector layer1 = sum01 + sum11;
    const Vector twist0 = edge10 - edge00;
    const Vector twist1 = edge11 - edge01;
    const Vector shear0 = edge00 + edge10;
    const Vector shear1 = edge01 + edge11;
    return {
        v[0],
        0.125 * (layer0 + layer1),
        {0.25 * (shear0 + shear1), 0.25 * (side0 + side1), 0.25 * (layer1 - layer0)},
        {0.5 * (twist0 + twist1), 0.5 * (side1 - side0), 0.5 * (shear1 - shear0), twist1 - twist0}};
}

/// Whether cells of this type have such a map and the dimension of the space.
constexpr bool isMultilinear(CellType type, std::size_t space)
{
    return (space == 2 && type == CellType::Quads) ||
           (space == 3 && (type == CellType::Prisms || type == CellType::Hexahedra));
}

/// The largest distance of a multilinear cell's points from its center along a reference coordinate.
constexpr double reachOf(CellType type)
{
    return type == CellType::Prisms ? 2.0 / 3.0 : 0.5;
}

/// The map of a cell of a multilinear type.
template<std::size_t D, typename Number>
MultilinearMap<D, Number> mapOf(CellType type, const Tensor<Number, D>* vertices)
{
    if constexpr (D == 2)
        return mapOfQuad(vertices);
    else
        return type == CellType::Prisms ? mapOfPrism(vertices) : mapOfHexahedron(vertices);
}

}
