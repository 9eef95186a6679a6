#include <tavrin/location/UniformLocator.hpp>

#include <tavrin/base/Processors.hpp>
#include <tavrin/location/Inverse.hpp>
#include <tavrin/location/Tolerance.hpp>

#include <functional>
#include <limits>

namespace tavrin
{

namespace
{

/// Gives each axis with one point a unit vector at right angles to all others.
template<std::size_t D>
void completeBasis(Columns<D>& columns, const std::array<bool, D>& isFlat)
{
    std::vector<Tensor<double, D>> normals;
    const auto remainder = [&](Tensor<double, D> vector)
    {
        for (const auto& normal : normals)
            vector -= dot(vector, normal) * normal;
        return vector;
    };
    for (std::size_t axis = 0; axis < D; ++axis)
        if (!isFlat[axis])
            normals.push_back(normalized(remainder(columns[axis])));
    for (std::size_t axis = 0; axis < D; ++axis)
        if (isFlat[axis])
        {
            Tensor<double, D> best{};
            for (std::size_t i = 0; i < D; ++i)
            {
                Tensor<double, D> unit{};
                unit[(axis + i) % D] = 1.0;
                const auto rest = remainder(unit);
                if (norm(rest) > norm(best) + 0.01)
                    best = rest;
            }
            columns[axis] = normalized(best);
            normals.push_back(columns[axis]);
        }
}

/// The inverse of the matrix with these columns; NaN where there is none. An axis with one point gets a unit
/// vector at right angles to the others.
template<std::size_t D>
Tensor<double, D, D> inverseOf(Columns<D> columns, const std::array<bool, D>& isFlat)
{
    // Columns of the order of 1, so that their products neither overflow nor underflow.
    Tensor<double, D> lengths;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        lengths[axis] = isFlat[axis] ? 1.0 : maximumNorm(columns[axis]);
        columns[axis] /= lengths[axis];
    }
    completeBasis(columns, isFlat);
    const Inverse<D> inverse(columns);
    Tensor<double, D, D> matrix;
    for (std::size_t axis = 0; axis < D; ++axis)
        for (std::size_t i = 0; i < D; ++i)
            matrix(axis, i) = inverse.exists() ? inverse.row(axis)[i] / lengths[axis]
                                               : std::numeric_limits<double>::quiet_NaN();
    return matrix;
}

}

template<std::size_t D>
UniformLocator<D>::UniformLocator(const UniformGrid<D>& grid)
    : mCells(grid.numbering()), mStart(grid.point(0)), mIsOriented(grid.isOriented())
{
    const auto& layout = grid.layout();
    Columns<D> columns;
    double across = 0.0;
    double largest = maximumNorm(mStart);
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        mIsFlat[axis] = layout.size[axis] < 2;
        for (std::size_t i = 0; i < D; ++i)
            columns[axis][i] = layout.direction(i, axis) * layout.spacing[axis];
        if (mIsFlat[axis])
            continue;
        across = std::max(across, maximumNorm(columns[axis]));
        largest += maximumNorm(columns[axis]) * static_cast<double>(layout.size[axis] - 1);
    }
    if (mIsOriented)
        mToIndices = inverseOf(columns, mIsFlat);
    else
        for (std::size_t axis = 0; axis < D; ++axis)
            mToIndices(axis, axis) = mIsFlat[axis] ? 1.0 : 1.0 / layout.spacing[axis];
    mIsBox = !mIsOriented && std::ranges::none_of(mIsFlat, std::identity());
    const double rounding = coordinateRounding * largest;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        double growth = 0.0;
        for (std::size_t i = 0; i < D; ++i)
            growth += std::abs(mToIndices(axis, i));
        const std::size_t cells = mIsFlat[axis] ? 0 : layout.size[axis] - 1;
        mLastCell[axis] = static_cast<std::int64_t>(cells) - 1;
        mTolerance[axis] = mIsFlat[axis] ? locationTolerance * across + rounding
                                         : toleranceIn(1.0 / growth, rounding);
        mLimit[axis] = static_cast<double>(cells) + mTolerance[axis];
    }
    // A whole cell beyond the tolerance, which is at most a thousandth of a cell.
    for (std::size_t corner = 0; corner < std::size_t{1} << D; ++corner)
    {
        Position position = mStart;
        for (std::size_t axis = 0; axis < D; ++axis)
            if (!mIsFlat[axis])
                position +=
                    ((corner >> axis & 1U) != 0 ? mLimit[axis] + 1.0 : -1.0) * columns[axis];
        mBounds.add(position);
    }
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        mBounds.lower[axis] -= across + rounding;
        mBounds.upper[axis] += across + rounding;
    }
}

template<std::size_t D>
inline typename UniformLocator<D>::Along UniformLocator<D>::along(std::size_t axis,
                                                                  double index) const
{
    // Without branches, which would be mispredicted for random positions, and through signed integers,
    // to and from which processors convert in one instruction.
    const double within = index > 0.0 ? index : 0.0;
    auto cell = static_cast<std::int64_t>(std::min(within, static_cast<double>(mLastCell[axis])));
    double share = index - static_cast<double>(cell);
    bool isOnLower = share <= mTolerance[axis];
    isOnLower &= cell > 0;
    cell -= isOnLower ? 1 : 0;
    share += isOnLower ? 1.0 : 0.0;
    return {static_cast<std::size_t>(cell), share};
}

template<std::size_t D>
void UniformLocator<D>::locate(std::span<const Position> positions, Location* locations,
                               std::uint8_t* isInside, Hint&) const
{
    if (mIsBox)
        locateInBox(positions, locations, isInside);
    else
        for (std::size_t k = 0; k < positions.size(); ++k)
            isInside[k] = locateOne(positions[k], locations[k]) ? 1 : 0;
}

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void UniformLocator<D>::locateInBox(
    std::span<const Position> positions, Location* locations, std::uint8_t* isInside) const
{
    for (std::size_t k = 0; k < positions.size(); ++k)
    {
        bool isIn = true;
        std::size_t cell = 0;
        std::size_t corner = 0;
        std::array<double, 3> shares{};
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            const double index = mToIndices(axis, axis) * (positions[k][axis] - mStart[axis]);
            isIn &= index >= -mTolerance[axis];
            isIn &= index <= mLimit[axis];
            const auto [number, share] = along(axis, index);
            cell += number * mCells.cellStride(axis);
            corner += number * mCells.pointStride(axis);
            shares[axis] = share;
        }
        isInside[k] = isIn ? 1 : 0;
        mCells.fill(cell, corner, shares, locations[k]);
    }
}

template<std::size_t D>
bool UniformLocator<D>::locateOne(const Position& position, Location& location) const
{
    const Position offset = position - mStart;
    Position indices;
    if (mIsOriented)
        indices = multiply(mToIndices, offset);
    else
        for (std::size_t axis = 0; axis < D; ++axis)
            indices[axis] = mToIndices(axis, axis) * offset[axis];

    StructuredCell::Builder builder(mCells);
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        const double index = indices[axis];
        if (!(index >= -mTolerance[axis] && index <= mLimit[axis]))
            return false;
        if (mIsFlat[axis])
            continue;
        const auto [cell, share] = along(axis, index);
        builder.set(axis, cell, share);
    }
    builder.fill(location);
    return true;
}

template class UniformLocator<1>;
template class UniformLocator<2>;
template class UniformLocator<3>;

}
