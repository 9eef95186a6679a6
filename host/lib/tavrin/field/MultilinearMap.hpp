#pragma once

#include <tavrin/domain/CellType.hpp>
#include <tavrin/field/Inverse.hpp>

#include <array>

namespace tavrin
{

/// The map of a quad, prism or hexahedron from reference coordinates, as seen from its centre. It is
/// the sum of a constant, a linear term, and terms in the products of different coordinates.
template<std::size_t D>
struct MultilinearMap
{
    using Position = Tensor<double, D>;

    Position constant;
    Columns<D> linear;
    /// Of the products uv, vw, wu and uvw; in the plane that of uv alone.
    std::array<Position, D == 3 ? 4 : 1> products;

    Position operator()(const Position& u) const
    {
        Position sum = constant;
        for (std::size_t i = 0; i < D; ++i)
            sum += u[i] * linear[i];
        sum += u[0] * u[1] * products[0];
        if constexpr (D == 3)
            sum += u[1] * u[2] * products[1] + u[2] * u[0] * products[2] +
                   u[0] * u[1] * u[2] * products[3];
        return sum;
    }

    Columns<D> derivatives(const Position& u) const
    {
        Columns<D> columns = linear;
        columns[0] += u[1] * products[0];
        columns[1] += u[0] * products[0];
        if constexpr (D == 3)
        {
            columns[0] += u[2] * products[2] + u[1] * u[2] * products[3];
            columns[1] += u[2] * products[1] + u[2] * u[0] * products[3];
            columns[2] += u[1] * products[1] + u[0] * products[2] + u[0] * u[1] * products[3];
        }
        return columns;
    }
};

inline MultilinearMap<2> mapOfQuad(const Vector2* v, const Vector2& origin)
{
    const Vector2 lower = v[1] - v[0];
    const Vector2 upper = v[2] - v[3];
    const Vector2 left = v[3] - v[0];
    const Vector2 right = v[2] - v[1];
    const Vector2 middle = (v[0] - origin) + (v[1] - origin) + (v[2] - origin) + (v[3] - origin);
    return {0.25 * middle, {0.5 * (lower + upper), 0.5 * (left + right)}, {upper - lower}};
}

inline MultilinearMap<3> mapOfPrism(const Vector3* v, const Vector3& origin)
{
    const auto mean = [&](const Vector3* triangle)
    {
        return ((triangle[0] - origin) + (triangle[1] - origin) + (triangle[2] - origin)) *
               (1.0 / 3.0);
    };
    const Vector3 lower = mean(v);
    const Vector3 upper = mean(v + 3);
    const Vector3 lowerR = v[1] - v[0];
    const Vector3 upperR = v[4] - v[3];
    const Vector3 lowerS = v[2] - v[0];
    const Vector3 upperS = v[5] - v[3];
    return {0.5 * (lower + upper),
            {0.5 * (lowerR + upperR), 0.5 * (lowerS + upperS), upper - lower},
            {Vector3{}, upperS - lowerS, upperR - lowerR, Vector3{}}};
}

inline MultilinearMap<3> mapOfHexahedron(const Vector3* v, const Vector3& origin)
{
    // Edges along r and their starts; then sums and differences of neighbours along s and t.
    const Vector3 edge00 = v[1] - v[0];
    const Vector3 edge10 = v[2] - v[3];
    const Vector3 edge01 = v[5] - v[4];
    const Vector3 edge11 = v[6] - v[7];
    const Vector3 sum00 = (v[0] - origin) + (v[1] - origin);
    const Vector3 sum10 = (v[3] - origin) + (v[2] - origin);
    const Vector3 sum01 = (v[4] - origin) + (v[5] - origin);
    const Vector3 sum11 = (v[7] - origin) + (v[6] - origin);
    const Vector3 side0 = sum10 - sum00;
    const Vector3 side1 = sum11 - sum01;
    const Vector3 layer0 = sum00 + sum10;
    const Vector3 layer1 = sum01 + sum11;
    const Vector3 twist0 = edge10 - edge00;
    const Vector3 twist1 = edge11 - edge01;
    const Vector3 shear0 = edge00 + edge10;
    const Vector3 shear1 = edge01 + edge11;
    return {
        0.125 * (layer0 + layer1),
        {0.25 * (shear0 + shear1), 0.25 * (side0 + side1), 0.25 * (layer1 - layer0)},
        {0.5 * (twist0 + twist1), 0.5 * (side1 - side0), 0.5 * (shear1 - shear0), twist1 - twist0}};
}

/// The map minus the position, so that its zero is wanted.
inline MultilinearMap<2> mapOf(CellType, const Vector2* vertices, const Vector2& position)
{
    return mapOfQuad(vertices, position);
}
inline MultilinearMap<3> mapOf(CellType type, const Vector3* vertices, const Vector3& position)
{
    return type == CellType::Prisms ? mapOfPrism(vertices, position)
                                    : mapOfHexahedron(vertices, position);
}

}
