#pragma once

#include <tavrin/location/Lanes.hpp>
#include <tavrin/location/MultilinearMap.hpp>
#include <tavrin/location/Tolerance.hpp>

#include <limits>

namespace tavrin
{

/// Whether some component of a vector is larger than it may be, up or down.
template<std::size_t D, typename Number>
MaskOf<Number> isBeyond(const Tensor<Number, D>& vector, const Tensor<Number, D>& limits)
{
    using std::abs;
    using std::max;
    Number excess = abs(vector[0]) - limits[0];
    for (std::size_t i = 1; i < D; ++i)
        excess = max(excess, abs(vector[i]) - limits[i]);
    return excess > 0.0;
}

/// Looks for the reference points that a multilinear map takes to positions. Numbers are doubles, or
/// `Lanes` for several searches side by side, each of which ends as it would alone.
template<std::size_t D, typename Number>
class MultilinearInversion
{
public:
    using Mask = MaskOf<Number>;
    using Position = Tensor<Number, D>;

    /// What is known of a position.
    struct Answer
    {
        /// False for a cell whose linear term is too flat to say anything, and for positions so far
        /// away that they cannot be computed with.
        Mask isRegular;
        /// Whether it is certain that the cell does not have the position, not even by its tolerance.
        Mask isRuledOut;
        /// Whether `solution` is one, as seen from the center of the cell. It may lie outside.
        Mask isFound;
        Position solution;
        /// How far the solution moves at most with each unit of a change of the position. Of single
        /// numbers only.
        double inverseNorm = 1.0;
    };

    MultilinearInversion() = default;

    /// For a cell whose type is multilinear.
    MultilinearInversion(CellType type, const Position* vertices)
        : mMap(mapOf(type, vertices)), mInverse(mMap.linear), mIsRegular(mInverse.isReliable())
    {
        const double reach = reachOf(type);
        // From here on in the coordinates where the linear term is the identity.
        mPairs = 0.0;
        mTriple = 0.0;
        Position bounds{};
        for (std::size_t i = 0; i < mProducts.factors.size(); ++i)
        {
            using std::abs;
            const bool isPair = i < 3;
            Position& factor = mProducts.factors[i];
            factor = mInverse * mMap.products.factors[i];
            (isPair ? mPairs : mTriple) += maximumNorm(factor);
            for (std::size_t axis = 0; axis < D; ++axis)
                bounds[axis] += abs(factor[axis]) * (reach * reach * (isPair ? 1.0 : reach));
        }
        // A solution in the cell is the affine one but for the products, which are bounded there.
        mBound = maximumNorm(bounds);
        for (std::size_t axis = 0; axis < D; ++axis)
            mLimits[axis] = reach + 1.01 * bounds[axis] + largestTolerance;
    }

    /// The part of it that says at once of most positions outside that they are.
    struct Affine
    {
        Position origin;
        Position constant;
        Inverse<D, Number> inverse;
        /// Of the components of the solution. Infinite where it is no proof.
        Position limits;

        Position solution(const Position& position) const
        {
            return inverse * (position - origin - constant);
        }
    };
    Affine affine() const
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        Affine affine{mMap.origin, mMap.constant, mInverse, mLimits};
        Mask isProof = mIsRegular;
        for (std::size_t i = 0; i < D; ++i)
            isProof = isProof & isFinite(mInverse.row(i));
        for (Number& limit : affine.limits)
            limit = select(isProof, limit, Number(infinity));
        return affine;
    }

    Answer find(const Position& position) const
    {
        const Position offset = position - mMap.origin;
        const Position linearSolution = affine().solution(position);
        Answer answer;
        answer.isRegular = mIsRegular & isFinite(linearSolution);
        answer.isRuledOut = answer.isRegular & isBeyond(linearSolution, mLimits);
        answer.isFound =
            andNot(answer.isRegular & (mBound < shortestStep * shortestStep), answer.isRuledOut);
        answer.solution = linearSolution;
        for (int i = 0; i < cheapSteps; ++i)
            answer.solution = clamped(linearSolution - mProducts(answer.solution));
        double growth = 1.0;
        Mask isActive = andNot(andNot(answer.isRegular, answer.isRuledOut), answer.isFound);
        for (int i = 0; i < maximumSteps && any(isActive); ++i)
        {
            const Position& start = answer.solution;
            Columns<D, Number> derivatives{};
            for (std::size_t axis = 0; axis < D; ++axis)
                derivatives[axis][axis] = 1.0;
            mProducts.addDerivatives(start, derivatives);
            const Inverse<D, Number> local(derivatives);
            const Position first = local * (start + mProducts(start) - linearSolution);
            const Position between = clamped(start - first);
            // By the map itself, so that the rounding of its inverse does not stay.
            const Position second = local * (mInverse * (mMap(between) - offset));
            const Position last = clamped(between - second);

            isActive = isActive & local.exists();
            for (std::size_t axis = 0; axis < D; ++axis)
                answer.solution[axis] = select(isActive, last[axis], answer.solution[axis]);
            Mask isDone = isActive;
            isDone &= maximumNorm(first) < shortStep;
            isDone &= maximumNorm(second) < shortestStep;
            answer.isFound = answer.isFound | isDone;
            isActive = andNot(isActive, isDone);
            if constexpr (std::is_same_v<Number, double>)
                growth = local.growth();
        }
        if constexpr (std::is_same_v<Number, double>)
            answer.inverseNorm = mInverse.growth() * growth;
        return answer;
    }

    /// By how much derivatives up to a distance from the center differ from those at the center, as
    /// a share of them. Below 1 no two points have the same position.
    Number distortion(const Number& distance) const
    {
        return distance * (2.0 * mPairs + 3.0 * distance * mTriple);
    }

private:
    /// After a step with new derivatives as short as the first, and one with the same derivatives as
    /// short as the second, only rounding is left.
    static constexpr double shortStep = 1e-3;
    static constexpr double shortestStep = 1e-9;
    static constexpr int maximumSteps = 20;

    /// So many steps without derivatives leave one with them to most cells.
    static constexpr int cheapSteps = 3;

    static Mask isFinite(const Position& u)
    {
        Number poison = 0.0;
        for (const Number& coordinate : u)
            poison += 0.0 * coordinate;
        return poison <= 0.0;
    }

    static Position clamped(Position u)
    {
        using std::max;
        using std::min;
        for (Number& coordinate : u)
            coordinate = min(max(coordinate, Number(-1.0)), Number(1.0));
        return u;
    }

    MultilinearMap<D, Number> mMap;
    Inverse<D, Number> mInverse;
    Mask mIsRegular;
    ProductTerms<D, Number> mProducts;
    /// Bounds of the products of two coordinates, and of that of three.
    Number mPairs;
    Number mTriple;
    /// Of all products in the cell.
    Number mBound;
    /// How far from the center the solution without products may be along each axis, for positions in
    /// the cell.
    Position mLimits;
};

}
