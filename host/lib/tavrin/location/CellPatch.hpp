#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/location/ShapeTable.hpp>

#include <array>
#include <cmath>
#include <utility>

namespace tavrin
{

/// A cell as a polynomial over the unit cube that it is a collapsed image of, or a box-shaped part of that.
/// It is in Bernstein form, of second degree in each cube coordinate. Positions are relative to the first
/// vertex, so that large coordinates do not cost precision.
template<std::size_t D>
class CellPatch
{
public:
    using Position = Tensor<double, D>;

    CellPatch(CellType type, const Position* vertices) : mDimension(dimensionOf(type))
    {
        const ShapeTable& table = shapeTableOf(type);
        std::array<Position, maximumVertices> offsets;
        for (std::size_t k = 0; k < table.numVertices; ++k)
            offsets[k] = vertices[k] - vertices[0];
        for (std::size_t i = 0; i < numControlPoints(); ++i)
            mControlPoints[i] = table.controlPoint(i, offsets.data());
    }

    /// The cube coordinates of the middle of the part.
    const Reference& middle() const { return mMiddle; }

    /// A box that holds the part.
    Box<D> box() const
    {
        auto box = Box<D>::nothing();
        for (std::size_t i = 0; i < numControlPoints(); ++i)
            box.add(mControlPoints[i]);
        return box;
    }

    /// Both halves along an axis, by de Casteljau's algorithm.
    std::pair<CellPatch, CellPatch> halves(std::size_t axis) const
    {
        std::pair<CellPatch, CellPatch> result(*this, *this);
        auto& [first, second] = result;
        first.mSize[axis] *= 0.5;
        second.mSize[axis] *= 0.5;
        first.mMiddle[axis] -= 0.5 * first.mSize[axis];
        second.mMiddle[axis] += 0.5 * second.mSize[axis];
        const std::size_t stride = powersOfThree[axis];
        for (std::size_t i = 0; i < numControlPoints(); ++i)
            if (i / stride % 3 == 1)
            {
                const std::size_t start = i - stride;
                const std::size_t end = i + stride;
                first.mControlPoints[i] = 0.5 * (mControlPoints[start] + mControlPoints[i]);
                second.mControlPoints[i] = 0.5 * (mControlPoints[i] + mControlPoints[end]);
                first.mControlPoints[end] =
                    0.5 * (first.mControlPoints[i] + second.mControlPoints[i]);
                second.mControlPoints[start] = first.mControlPoints[end];
            }
        return result;
    }

    /// The position at cube coordinates, and its derivatives by the first N of them. Not for parts.
    template<std::size_t N>
    Position evaluate(const Reference& at, std::array<Position, N>& derivatives) const
    {
        std::array<std::array<double, 3>, 3> values;
        std::array<std::array<double, 3>, 3> slopes;
        for (std::size_t axis = 0; axis < N; ++axis)
        {
            const double u = at[axis];
            values[axis] = {(1.0 - u) * (1.0 - u), 2.0 * u * (1.0 - u), u * u};
            slopes[axis] = {2.0 * u - 2.0, 2.0 - 4.0 * u, 2.0 * u};
        }
        Position position{};
        derivatives = {};
        for (std::size_t i = 0; i < powersOfThree[N]; ++i)
        {
            double weight = 1.0;
            std::array<double, N> slope;
            slope.fill(1.0);
            for (std::size_t axis = 0; axis < N; ++axis)
            {
                const std::size_t n = i / powersOfThree[axis] % 3;
                weight *= values[axis][n];
                for (std::size_t other = 0; other < N; ++other)
                    slope[other] *= other == axis ? slopes[axis][n] : values[axis][n];
            }
            position += weight * mControlPoints[i];
            for (std::size_t axis = 0; axis < N; ++axis)
                derivatives[axis] += slope[axis] * mControlPoints[i];
        }
        return position;
    }

private:
    static constexpr std::array<std::size_t, 4> powersOfThree{1, 3, 9, 27};

    std::size_t numControlPoints() const { return powersOfThree[mDimension]; }

    std::size_t mDimension;
    /// Three along each axis. The part lies in their convex hull.
    std::array<Position, 27> mControlPoints;
    Reference mMiddle{0.5, 0.5, 0.5};
    Reference mSize{1.0, 1.0, 1.0};
};

}
