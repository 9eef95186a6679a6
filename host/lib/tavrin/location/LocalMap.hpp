#pragma once

#include <tavrin/location/Inverse.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

namespace tavrin
{

/// The position at a reference point, and its derivatives by N reference coordinates.
template<std::size_t D, std::size_t N>
struct LocalMap
{
    /// Relative to the first vertex, so that large coordinates do not cost precision.
    Tensor<double, D> position{};
    std::array<Tensor<double, D>, N> derivatives{};

    LocalMap(std::span<const Tensor<double, D>> vertices, std::span<const double> weights,
             std::span<const std::array<double, 3>> slopes)
    {
        for (std::size_t k = 1; k < vertices.size(); ++k)
        {
            const Tensor<double, D> edge = vertices[k] - vertices[0];
            position += weights[k] * edge;
            for (std::size_t i = 0; i < N; ++i)
                derivatives[i] += slopes[k][i] * edge;
        }
    }

    /// The inverse of the derivatives; for a cell of fewer dimensions than the space that of the normal
    /// equations.
    Inverse<N> inverse() const
    {
        if constexpr (N == D)
            return Inverse<N>(derivatives);
        else
        {
            Columns<N> normal;
            for (std::size_t i = 0; i < N; ++i)
                for (std::size_t j = 0; j < N; ++j)
                    normal[i][j] = dot(derivatives[i], derivatives[j]);
            return Inverse<N>(normal);
        }
    }

    /// The change of the reference point that moves the position by an offset, or as close to that as
    /// the cell allows.
    Tensor<double, N> step(const Inverse<N>& inverse, const Tensor<double, D>& offset) const
    {
        if constexpr (N == D)
            return inverse * offset;
        else
        {
            Tensor<double, N> projected;
            for (std::size_t i = 0; i < N; ++i)
                projected[i] = dot(derivatives[i], offset);
            return inverse * projected;
        }
    }

    /// The smallest change of the position for a unit change of one reference coordinate.
    double smallestExtent() const
    {
        double smallest = maximumNorm(derivatives[0]);
        for (const auto& derivative : derivatives)
            smallest = std::min(smallest, maximumNorm(derivative));
        return smallest;
    }

    /// The largest change of the reference point for a unit change of the position.
    double inverseNorm(const Inverse<N>& inverse) const
    {
        const double norm = inverse.growth();
        return N == D ? norm : std::sqrt(norm);
    }
};

/// The inverse of the derivatives of a needle-shaped cell, whose plain inverse rounding makes useless: long
/// columns that are nearly parallel are replaced by their differences first, which are exact enough
/// since vertices are stored at least as exactly.
template<std::size_t D, std::size_t N>
class NeedleInverse
{
public:
    /// `resolution` is the rounding of positions, as a distance.
    NeedleInverse(std::array<Tensor<double, D>, N> columns, double resolution)
    {
        double longest = 0.0;
        for (const auto& column : columns)
            longest = std::max(longest, maximumNorm(column));
        reduce(columns);
        double shortest = longest;
        Columns<N> normal;
        for (std::size_t i = 0; i < N; ++i)
        {
            mScales[i] = maximumNorm(columns[i]);
            shortest = std::min(shortest, mScales[i]);
            columns[i] /= mScales[i];
        }
        for (std::size_t i = 0; i < N; ++i)
            for (std::size_t j = 0; j < N; ++j)
                normal[i][j] = dot(columns[i], columns[j]);
        const Inverse<N> inverse(normal);
        mExists = shortest > std::max(thinnest * longest, 64.0 * resolution) && inverse.exists();
        for (std::size_t i = 0; i < N; ++i)
        {
            mRows[i] = {};
            for (std::size_t j = 0; j < N; ++j)
                mRows[i] += inverse.row(i)[j] / mScales[i] * columns[j];
        }
        for (std::size_t n = mNumDifferences; n-- > 0;)
            mRows[mDifferences[n].subtracted] -= mDifferences[n].sign * mRows[mDifferences[n].from];
    }

    /// False for a cell that is flat.
    bool exists() const { return mExists; }

    Tensor<double, N> operator*(const Tensor<double, D>& offset) const
    {
        Tensor<double, N> result;
        for (std::size_t i = 0; i < N; ++i)
            result[i] = dot(mRows[i], offset);
        return result;
    }

    double growth() const { return growthBy(mRows); }

private:
    /// A cell that is thinner than this in units of its length counts as flat: of the sixteen digits of
    /// its vertices six are left across it.
    static constexpr double thinnest = 1e-10;

    /// Column `from` has become its difference from, or sum with, column `subtracted`.
    struct Difference
    {
        std::size_t from;
        std::size_t subtracted;
        double sign;
    };

    void reduce(std::array<Tensor<double, D>, N>& columns)
    {
        bool isReduced = true;
        while (isReduced && mNumDifferences < mDifferences.size())
        {
            isReduced = false;
            for (std::size_t i = 0; i < N; ++i)
                for (std::size_t j = 0; j < N; ++j)
                    for (const double sign : {1.0, -1.0})
                    {
                        const auto difference = columns[i] - sign * columns[j];
                        if (i == j || mNumDifferences == mDifferences.size() ||
                            !(maximumNorm(difference) < 0.5 * maximumNorm(columns[i])))
                            continue;
                        columns[i] = difference;
                        mDifferences[mNumDifferences++] = {i, j, sign};
                        isReduced = true;
                    }
        }
    }

    std::array<Tensor<double, D>, N> mRows;
    std::array<double, N> mScales;
    bool mExists;
    std::array<Difference, 8> mDifferences;
    std::size_t mNumDifferences = 0;
};

/// The inverse of a local map, by which Newton's method steps.
template<std::size_t D, std::size_t N>
class LocalInverse
{
public:
    LocalInverse(const LocalMap<D, N>& map, double resolution) : mMap(map), mInverse(map.inverse())
    {
        if (!mInverse.isReliable())
            mNeedle.emplace(map.derivatives, resolution);
    }

    bool exists() const { return !mNeedle || mNeedle->exists(); }

    Tensor<double, N> step(const Tensor<double, D>& offset) const
    {
        return mNeedle ? *mNeedle * offset : mMap.step(mInverse, offset);
    }

    double norm() const { return mNeedle ? mNeedle->growth() : mMap.inverseNorm(mInverse); }

private:
    const LocalMap<D, N>& mMap;
    Inverse<N> mInverse;
    std::optional<NeedleInverse<D, N>> mNeedle;
};

}
