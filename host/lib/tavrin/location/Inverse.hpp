#pragma once

#include <tavrin/value/Tensor.hpp>

#include <algorithm>

namespace tavrin
{

/// The columns, or the rows, of a square matrix of doubles or `Lanes`.
template<std::size_t N, typename Number = double>
using Columns = std::array<Tensor<Number, N>, N>;

/// The rows of the adjugate of a matrix: of its inverse times its determinant.
template<std::size_t N, typename Number>
Columns<N, Number> adjugate(const Columns<N, Number>& columns)
{
    if constexpr (N == 1)
        return {Tensor<Number, 1>(Number(1.0))};
    else if constexpr (N == 2)
        return {Tensor<Number, 2>(columns[1][1], 0.0 - columns[1][0]),
                Tensor<Number, 2>(0.0 - columns[0][1], columns[0][0])};
    else
        return {cross(columns[1], columns[2]), cross(columns[2], columns[0]),
                cross(columns[0], columns[1])};
}

/// The largest absolute component.
template<std::size_t N, typename Number>
Number maximumNorm(const Tensor<Number, N>& vector)
{
    using std::abs;
    using std::max;
    Number largest = 0.0;
    for (const Number& component : vector)
        largest = max(largest, abs(component));
    return largest;
}

/// The maximum norm of the matrix with these rows: a bound on the growth of the largest component of a
/// vector that it is applied to.
template<std::size_t Size, std::size_t N, typename Number>
Number growthBy(const std::array<Tensor<Number, Size>, N>& rows)
{
    using std::abs;
    using std::max;
    Number largest = 0.0;
    for (const auto& row : rows)
    {
        Number sum = 0.0;
        for (const Number& component : row)
            sum += abs(component);
        largest = max(largest, sum);
    }
    return largest;
}

/// The inverse of a small matrix.
template<std::size_t N, typename Number = double>
class Inverse
{
public:
    Inverse() = default;
    explicit Inverse(const Columns<N, Number>& columns) : mRows(adjugate<N, Number>(columns))
    {
        using std::abs;
        Number determinant = dot(mRows[0], columns[0]);
        mLengths = 1.0;
        for (const auto& column : columns)
            mLengths *= maximumNorm(column);
        mVolume = abs(determinant);
        const Number factor = 1.0 / determinant;
        for (auto& row : mRows)
            row *= factor;
    }

    /// Whether the determinant is more than a fraction of the product of the lengths of the columns.
    /// False where one of them is NaN.
    auto isIndependent(double share) const { return mVolume > share * mLengths; }

    /// Whether half the digits of the inverse are right: its relative error is about the rounding of
    /// doubles, 1e-16, divided by this fraction.
    auto isReliable() const { return isIndependent(1e-8); }

    /// Whether rounding leaves at least a digit or two of the inverse.
    auto exists() const { return isIndependent(1e-14); }

    const Tensor<Number, N>& row(std::size_t i) const { return mRows[i]; }

    Tensor<Number, N> operator*(const Tensor<Number, N>& vector) const
    {
        Tensor<Number, N> result;
        for (std::size_t i = 0; i < N; ++i)
            result[i] = dot(mRows[i], vector);
        return result;
    }

    /// A bound on the growth of the largest component of a vector by the inverse.
    Number growth() const { return growthBy(mRows); }

private:
    Columns<N, Number> mRows;
    Number mVolume;
    Number mLengths;
};

}
