#pragma once

#include <tavrin/value/Tensor.hpp>

#include <algorithm>

namespace tavrin
{

/// The columns of a square matrix, or its rows.
template<std::size_t N>
using Columns = std::array<Tensor<double, N>, N>;

inline Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The rows of the inverse of a matrix, times its determinant.
inline Columns<1> adjugate(const Columns<1>&)
{
    return {Vector1(1.0)};
}
inline Columns<2> adjugate(const Columns<2>& columns)
{
    return {Vector2(columns[1][1], -columns[1][0]), Vector2(-columns[0][1], columns[0][0])};
}
inline Columns<3> adjugate(const Columns<3>& columns)
{
    return {cross(columns[1], columns[2]), cross(columns[2], columns[0]),
            cross(columns[0], columns[1])};
}

/// The largest absolute component.
template<std::size_t N>
double maximumNorm(const Tensor<double, N>& vector)
{
    double largest = 0.0;
    for (const double component : vector)
        largest = std::max(largest, std::abs(component));
    return largest;
}

/// The inverse of a small matrix.
template<std::size_t N>
class Inverse
{
public:
    explicit Inverse(const Columns<N>& columns) : mRows(adjugate(columns))
    {
        const double determinant = dot(mRows[0], columns[0]);
        double lengths = 1.0;
        for (const auto& column : columns)
            lengths *= maximumNorm(column);
        mIndependence = std::abs(determinant) / lengths;
        const double factor = 1.0 / determinant;
        for (auto& row : mRows)
            row *= factor;
    }

    /// The determinant over the product of the lengths of the columns: 0, or not a number, where
    /// the columns are dependent.
    double independence() const { return mIndependence; }

    /// False where rounding leaves nothing of the inverse.
    bool exists() const { return mIndependence > 1e-14; }

    const Tensor<double, N>& row(std::size_t i) const { return mRows[i]; }

    Tensor<double, N> operator*(const Tensor<double, N>& vector) const
    {
        Tensor<double, N> result;
        for (std::size_t i = 0; i < N; ++i)
            result[i] = dot(mRows[i], vector);
        return result;
    }

    /// How many times the largest component of a vector that of the product may be.
    double growth() const
    {
        double largest = 0.0;
        for (const auto& row : mRows)
        {
            double sum = 0.0;
            for (const double component : row)
                sum += std::abs(component);
            largest = std::max(largest, sum);
        }
        return largest;
    }

private:
    Columns<N> mRows;
    double mIndependence;
};

}
