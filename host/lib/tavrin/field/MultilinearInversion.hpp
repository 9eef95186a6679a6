#pragma once

#include <tavrin/field/CellLocator.hpp>
#include <tavrin/field/Lanes.hpp>
#include <tavrin/field/MultilinearMap.hpp>

namespace tavrin
{

/// Looks for the reference point that a multilinear map takes to zero. Numbers are doubles, or
/// `Lanes` for several searches side by side, each of which ends as it would alone.
template<std::size_t D, typename Number>
class MultilinearInversion
{
public:
    using Mask = MaskOf<Number>;
    using Position = Tensor<Number, D>;

    /// `reach` is how far the cell extends from its centre along each reference coordinate.
    MultilinearInversion(const MultilinearMap<D, Number>& map, double reach)
        : mInverse(map.linear), mIsRegular(mInverse.isReliable()), mReach(reach)
    {
        // From here on in the coordinates where the linear term is the identity.
        std::array<Number, std::tuple_size_v<decltype(mProducts.factors)>> size;
        for (std::size_t i = 0; i < size.size(); ++i)
        {
            mProducts.factors[i] = mInverse * map.products.factors[i];
            size[i] = maximumNorm(mProducts.factors[i]);
        }
        mPairs = size[0];
        if constexpr (D == 3)
        {
            mPairs += size[1] + size[2];
            mTriple = size[3];
        }
        solve(map);
    }

    /// Whether it is certain that the cell does not have the position, not even by its tolerance.
    const Mask& isRuledOut() const { return mIsRuledOut; }

    /// Whether `solution()` is one, as seen from the centre of the cell. It may lie outside.
    const Mask& isFound() const { return mIsFound; }
    const Position& solution() const { return mSolution; }

    /// False for a cell whose linear term is too flat to say anything, and for positions so far away
    /// that they cannot be computed with.
    const Mask& isRegular() const { return mIsRegular; }

    /// By how much derivatives up to a distance from the centre differ from those at the centre, as
    /// a share of them. Below 1 no two points have the same position.
    Number distortion(const Number& distance) const
    {
        return distance * (2.0 * mPairs + 3.0 * distance * mTriple);
    }

    /// How far the solution moves at most with each unit of a change of the position.
    double inverseNorm() const { return mInverse.growth() * mLocalGrowth; }

private:
    /// After a step with new derivatives as short as the first, and one with the same derivatives as
    /// short as the second, only rounding is left.
    static constexpr double shortStep = 1e-3;
    static constexpr double shortestStep = 1e-9;
    static constexpr int maximumSteps = 20;

    void solve(const MultilinearMap<D, Number>& map)
    {
        const Position affine = mInverse * (-1.0 * map.constant);
        Number poison = 0.0;
        for (const Number& coordinate : affine)
            poison += 0.0 * coordinate;
        mIsRegular = mIsRegular & (poison <= 0.0);
        // The solution is the affine one but for the products, which are bounded in the cell.
        const Number bound = mReach * mReach * (mPairs + mReach * mTriple);
        mIsRuledOut = mIsRegular & (maximumNorm(affine) > mReach + 1.01 * bound + largestTolerance);
        mIsFound = andNot(mIsRegular & (bound < shortestStep * shortestStep), mIsRuledOut);
        // One step without derivatives comes cheap.
        mSolution = clamped(affine - mProducts(affine));
        Mask isActive = andNot(andNot(mIsRegular, mIsRuledOut), mIsFound);
        for (int i = 0; i < maximumSteps && any(isActive); ++i)
        {
            Columns<D, Number> derivatives{};
            for (std::size_t axis = 0; axis < D; ++axis)
                derivatives[axis][axis] = 1.0;
            mProducts.addDerivatives(mSolution, derivatives);
            const Inverse<D, Number> local(derivatives);
            const Position first = local * (mSolution + mProducts(mSolution) - affine);
            const Position between = clamped(mSolution - first);
            // By the map itself, so that the rounding of its inverse does not stay.
            const Position second = local * (mInverse * map(between));
            const Position last = clamped(between - second);

            isActive = isActive & local.exists();
            for (std::size_t axis = 0; axis < D; ++axis)
                mSolution[axis] = select(isActive, last[axis], mSolution[axis]);
            Mask isDone = isActive;
            isDone &= maximumNorm(first) < shortStep;
            isDone &= maximumNorm(second) < shortestStep;
            mIsFound = mIsFound | isDone;
            isActive = andNot(isActive, isDone);
            if constexpr (std::is_same_v<Number, double>)
                mLocalGrowth = local.growth();
        }
    }

    static Position clamped(Position u)
    {
        using std::max;
        using std::min;
        for (Number& coordinate : u)
            coordinate = min(max(coordinate, Number(-1.0)), Number(1.0));
        return u;
    }

    Inverse<D, Number> mInverse;
    Mask mIsRegular;
    double mReach;
    ProductTerms<D, Number> mProducts;
    /// Bounds of the products of two coordinates, and of that of three.
    Number mPairs = 0.0;
    Number mTriple = 0.0;
    Position mSolution;
    Mask mIsFound;
    Mask mIsRuledOut;
    double mLocalGrowth = 1.0;
};

}
