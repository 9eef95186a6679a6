#pragma once

#include <tavrin/location/Lanes.hpp>
#include <tavrin/location/MultilinearMap.hpp>
#include <tavrin/location/Tolerance.hpp>

#include <cassert>
#include <limits>

namespace tavrin
{

/// Whether the magnitude of some component of a vector exceeds its limit.
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

/// Inverts a multilinear map: finds the reference points of positions. Numbers are doubles, or `Lanes`
/// for several searches side by side, each of which gives the result that it would give alone.
template<std::size_t D, typename Number>
class MultilinearInversion
{
public:
    using Mask = MaskOf<Number>;
    using Position = Tensor<Number, D>;

    /// The result for a position.
    struct Answer
    {
        /// False for a cell whose linear term is too close to singular, and for positions so far away
        /// that the computation overflows. The rest then means nothing.
        Mask isRegular;
        /// Whether it is proven that the cell does not contain the position, tolerance included.
        Mask isRuledOut;
        /// Whether `solution` is the reference point, relative to the center of the cell. It may lie
        /// outside of the cell.
        Mask isFound;
        Position solution;
        /// The largest change of the solution for a unit change of the position. Computed for doubles
        /// only.
        double inverseNorm = 1.0;
    };

    MultilinearInversion() = default;

    /// For a cell of a multilinear type.
    MultilinearInversion(CellType type, const Position* vertices)
        : mMap(mapOf(type, vertices)), mInverse(mMap.linear), mIsRegular(mInverse.isReliable())
    {
        assert(isMultilinear(type, D));
        const double reach = reachOf(type);
        // From here on in coordinates in which the linear term is the identity.
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
        // A solution in the cell differs from the affine one by the products, which are bounded there.
        // One percent more covers the rounding of the bounds and of the affine solution.
        mBound = maximumNorm(bounds);
        for (std::size_t axis = 0; axis < D; ++axis)
            mLimits[axis] = reach + 1.01 * bounds[axis] + largestTolerance;
    }

    /// The affine part of the map and its inverse, which rules out most positions outside of the cell.
    struct Affine
    {
        Position origin;
        Position constant;
        Inverse<D, Number> inverse;
        /// Bounds on the components of the affine solution for positions in the cell. Infinite where the
        /// inverse is not accurate enough for a proof.
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
            // By the map itself, so that the rounding of its inverse does not remain.
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

    /// How much derivatives up to a distance from the center differ from those at the center, relative
    /// to them. Below 1 the map is injective up to that distance.
    Number distortion(const Number& distance) const
    {
        return distance * (2.0 * mPairs + 3.0 * distance * mTriple);
    }

private:
    /// A Newton step shorter than `shortStep` is followed by one with the same derivatives, which are off
    /// by at most that much times the distortion. Where the second step is shorter than `shortestStep`,
    /// the error that is left is below 1e-12 times the distortion, far below the tolerance.
    static constexpr double shortStep = 1e-3;
    static constexpr double shortestStep = 1e-9;
    static constexpr int maximumSteps = 20;

    /// Fixed-point steps without derivatives come first. After three of them one Newton step is enough
    /// for most cells.
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
    /// Norms of the factors of products of two coordinates, and of that of three.
    Number mPairs;
    Number mTriple;
    /// A bound on the sum of all products in the cell.
    Number mBound;
    /// Bounds on the components of the affine solution, for positions in the cell.
    Position mLimits;
};

}
