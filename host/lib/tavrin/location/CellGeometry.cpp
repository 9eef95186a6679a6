#include <tavrin/location/CellGeometry.hpp>
#include <tavrin/location/Tolerance.hpp>

#include <tavrin/location/Inverse.hpp>
#include <tavrin/location/MultilinearInversion.hpp>
#include <tavrin/location/ShapeTable.hpp>

#include <cassert>
#include <limits>
#include <optional>

namespace tavrin
{

namespace
{

using enum CellType;

/// A Newton step squares the error: after a step of this length it is 1e-18, less than rounding.
constexpr double shortStep = 1e-9;
/// Far more than the few steps that convergence takes, so that only thin cells, in which rounding keeps
/// the steps long, reach it.
constexpr int maximumSteps = 50;

/// A search from within the cell that ends this many steps far outside of it is given up. A solution in
/// the cell is then found from a nearer start.
constexpr int maximumStrays = 4;

/// Newton's method finds the only solution where derivatives differ from those at the center by less
/// than this fraction h: each step then shrinks the error by 2 h / (1 - h), which is below 1 for h < 1/3.
constexpr double provenDistortion = 1.0 / 3.0;

bool isSimplex(CellType type)
{
    return type == Lines || type == Triangles || type == Tetrahedra;
}

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

/// The bounds of a cell that lies in the convex hull of some points, widened by its tolerance.
template<std::size_t D>
Box<D> boundsOfHull(const Tensor<double, D>* points, std::size_t count, double relativeRounding)
{
    Box<D> box{points[0], points[0]};
    double poison = 0.0;
    for (std::size_t k = 0; k < count; ++k)
        for (std::size_t i = 0; i < D; ++i)
        {
            box.lower[i] = std::min(box.lower[i], points[k][i]);
            box.upper[i] = std::max(box.upper[i], points[k][i]);
            poison += 0.0 * points[k][i];
        }
    // A reference coordinate that leaves the cell by d moves the position by less than 6 d extents.
    const double largest = std::max(maximumNorm(box.lower), maximumNorm(box.upper));
    const double margin = 32.0 * locationTolerance * maximumNorm(box.upper - box.lower) +
                          2.0 * relativeRounding * largest + poison;
    for (std::size_t i = 0; i < D; ++i)
    {
        box.lower[i] -= margin;
        box.upper[i] += margin;
    }
    return box;
}

/// A part of a cell. It is a box in the cube that the cell is a collapsed image of.
template<std::size_t D>
struct Part
{
    /// Three along each axis. The part lies in their convex hull.
    std::array<Tensor<double, D>, 27> controlPoints;
    Reference middle{0.5, 0.5, 0.5};
    Reference size{1.0, 1.0, 1.0};

    /// Both halves along an axis of a cell of a dimension, by de Casteljau's algorithm.
    std::pair<Part, Part> halves(std::size_t axis, std::size_t dimension) const
    {
        std::pair<Part, Part> result(*this, *this);
        auto& [first, second] = result;
        first.size[axis] *= 0.5;
        second.size[axis] *= 0.5;
        first.middle[axis] -= 0.5 * first.size[axis];
        second.middle[axis] += 0.5 * second.size[axis];
        constexpr std::array<std::size_t, 4> powers{1, 3, 9, 27};
        const std::size_t stride = powers[axis];
        for (std::size_t i = 0; i < powers[dimension]; ++i)
            if (i / stride % 3 == 1)
            {
                const std::size_t start = i - stride;
                const std::size_t end = i + stride;
                first.controlPoints[i] = 0.5 * (controlPoints[start] + controlPoints[i]);
                second.controlPoints[i] = 0.5 * (controlPoints[i] + controlPoints[end]);
                first.controlPoints[end] = 0.5 * (first.controlPoints[i] + second.controlPoints[i]);
                second.controlPoints[start] = first.controlPoints[end];
            }
        return result;
    }
};

bool isFinite(const Reference& at)
{
    return std::isfinite(at[0] + at[1] + at[2]);
}

template<std::size_t N>
Reference moved(Reference at, const Tensor<double, N>& change)
{
    for (std::size_t i = 0; i < N; ++i)
        at[i] += change[i];
    return at;
}

}

CellType geometryTypeOf(CellType type)
{
    return type >= SubparametricQuadraticLine && type <= SubparametricQuadraticHexahedron
               ? linearTypeOf(type)
               : type;
}

template<std::size_t D>
CellGeometry<D>::CellGeometry(CellType type, const Position* vertices, double relativeRounding)
    : mType(geometryTypeOf(type)), mVertices(vertices), mRelativeRounding(relativeRounding)
{
    assert(type != Invalid);
}

template<std::size_t D>
double CellGeometry<D>::rounding() const
{
    double largest = 0.0;
    for (std::size_t k = 0; k < numVerticesOf(mType); ++k)
        largest = std::max(largest, maximumNorm(mVertices[k]));
    return mRelativeRounding * largest;
}

template<std::size_t D>
Box<D> CellGeometry<D>::bounds() const
{
    const std::size_t count = numVerticesOf(mType);
    // A linear cell is inside the convex hull of its vertices.
    if (linearTypeOf(mType) == mType)
        return boundsOfHull(mVertices, count, mRelativeRounding);
    const ShapeTable& table = shapeTableOf(mType);
    std::array<Position, 27> controlPoints;
    for (std::size_t i = 0; i < table.numControlPoints(); ++i)
        controlPoints[i] = table.controlPoint(i, mVertices);
    return boundsOfHull(controlPoints.data(), table.numControlPoints(), mRelativeRounding);
}

template<std::size_t D>
bool CellGeometry<D>::isInside(const Reference& at, double inverseNorm,
                               const Position& position) const
{
    if (!isFinite(at))
        return false;
    const double outside = distanceOutside(mType, at);
    if (outside <= locationTolerance)
        return true;
    const double allowance = std::min(largestTolerance, 3.0 * rounding() * inverseNorm);
    return outside <= allowance && bounds().contains(position);
}

template<std::size_t D>
bool CellGeometry<D>::simplexContains(const Position& position, Reference& at) const
{
    Columns<D> edges;
    for (std::size_t i = 0; i < D; ++i)
        edges[i] = mVertices[i + 1] - mVertices[0];
    const Inverse<D> inverse(edges);
    if (!inverse.isReliable())
    {
        const NeedleInverse<D, D> needle(edges, rounding());
        at = moved(Reference{}, needle * (position - mVertices[0]));
        return needle.exists() && isInside(at, needle.growth(), position);
    }
    at = moved(Reference{}, inverse * (position - mVertices[0]));
    const double outside = distanceOutside(mType, at);
    if (outside <= locationTolerance)
        return isFinite(at);
    return outside <= largestTolerance && isInside(at, inverse.growth(), position);
}

template<std::size_t D>
bool CellGeometry<D>::multilinearContains(const Position& position, Reference& at) const
    requires(D >= 2)
{
    const double reach = reachOf(mType);
    const MultilinearInversion<D, double> inversion(mType, mVertices);
    const auto answer = inversion.find(position);
    if (!answer.isRegular)
        return searchParts<D>(position, at);
    if (answer.isRuledOut)
        return false;
    at = moved(centerReference(mType), answer.solution);
    if (!answer.isFound)
        return searchParts<D>(position, at);
    if (isInside(at, answer.inverseNorm, position))
        return true;
    // A solution outside the cell proves that there is none inside only if it is unique.
    const double range = std::max(reach, maximumNorm(answer.solution));
    return inversion.distortion(range) >= 1.0 && searchParts<D>(position, at);
}

template<std::size_t D>
template<std::size_t N>
bool CellGeometry<D>::generalContains(const Position& position, Reference& at) const
{
    const ShapeTable& table = shapeTableOf(mType);
    const LocalMap<D, N> map(std::span(mVertices, table.numVertices), table.centerWeights,
                             table.centerDerivatives);
    const Inverse<N> inverse = map.inverse();
    if (!inverse.isReliable())
        return searchParts<N>(position, at);
    const Position target = position - mVertices[0];
    at = moved(table.center, map.step(inverse, target - map.position));

    if constexpr (N < D)
    {
        if (searchFrom<N>(table.center, position, at))
            return true;
        return !isSimplex(mType) && searchParts<N>(position, at);
    }
    else
    {
        // The distance of the control points from those of the linear map bounds its error in the
        // cell, since Bernstein polynomials are positive and sum to 1.
        std::array<Position, maximumVertices> deviations;
        double largest = 0.0;
        for (std::size_t k = 0; k < table.numVertices; ++k)
        {
            deviations[k] = inverse * (mVertices[k] - mVertices[0] - map.position);
            for (std::size_t i = 0; i < D; ++i)
                deviations[k][i] -= table.vertexReferences[k][i] - table.center[i];
            largest = std::max(largest, maximumNorm(deviations[k]));
        }
        const double nothing = 64.0 * std::numeric_limits<double>::epsilon();
        if (largest < nothing)
            return isInside(at, inverse.growth(), position);
        double bound = 0.0;
        for (std::size_t i = 0; i < table.numControlPoints(); ++i)
            bound = std::max(bound, maximumNorm(table.controlPoint(i, deviations.data())));
        if (distanceOutside(mType, at) > 3.03 * bound + largestTolerance)
            return false;
        if (searchFrom<N>(distanceOutside(mType, at) < 0.5 ? at : table.center, position, at))
            return true;
        return 12.0 * bound >= provenDistortion && searchParts<N>(position, at);
    }
}

template<std::size_t D>
template<std::size_t N>
bool CellGeometry<D>::searchParts(const Position& position, Reference& at) const
{
    const ShapeTable& table = shapeTableOf(mType);
    Part<D> whole;
    for (std::size_t i = 0; i < table.numControlPoints(); ++i)
        whole.controlPoints[i] = table.controlPoint(i, mVertices);
    const Box<D> box = bounds();
    const double margin = largestTolerance * maximumNorm(box.upper - box.lower) + rounding();
    const auto isCandidate = [&](const Part<D>& part)
    {
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            double lower = part.controlPoints[0][axis];
            double upper = lower;
            for (std::size_t i = 1; i < table.numControlPoints(); ++i)
            {
                lower = std::min(lower, part.controlPoints[i][axis]);
                upper = std::max(upper, part.controlPoints[i][axis]);
            }
            if (position[axis] < lower - margin || position[axis] > upper + margin)
                return false;
        }
        return true;
    };
    const auto search = [&](const auto& searchIn, const Part<D>& part, std::size_t depth) -> bool
    {
        if (!isCandidate(part))
            return false;
        if (depth == 2 * N)
            return searchFrom<N>(collapsedReference(mType, part.middle), position, at);
        const auto [first, second] = part.halves(depth % N, N);
        return searchIn(searchIn, first, depth + 1) || searchIn(searchIn, second, depth + 1);
    };
    return search(search, whole, 0);
}

template<std::size_t D>
template<std::size_t N>
bool CellGeometry<D>::searchFrom(const Reference& start, const Position& position,
                                 Reference& at) const
{
    const std::size_t count = numVerticesOf(mType);
    std::array<double, maximumVertices> weights;
    std::array<std::array<double, 3>, maximumVertices> slopes;
    const Position target = position - mVertices[0];
    Reference current = start;
    int strays = 0;
    for (int i = 0;; ++i)
    {
        shapeFunctions(mType, current, weights);
        shapeDerivatives(mType, current, slopes);
        const LocalMap<D, N> map(std::span(mVertices, count), weights, slopes);
        const LocalInverse<D, N> inverse(map, rounding());
        const Position offset = target - map.position;
        // A point that sides of the cell collapse to belongs to the cell, though the map has no inverse
        // there. In a thin cell rounding may keep the steps long, too. A cell that is flat as a whole
        // does not get this far.
        if (!inverse.exists() || i == maximumSteps)
        {
            at = current;
            return i > 0 && maximumNorm(offset) <= rounding() &&
                   isInside(at, inverse.exists() ? inverse.norm() : 0.0, position);
        }
        const Tensor<double, N> step = inverse.step(offset);
        const double length = maximumNorm(step);
        current = moved(current, step * std::min(1.0, 0.5 / length));
        for (double& coordinate : current)
            coordinate = std::clamp(coordinate, -0.5, 1.5);
        if (distanceOutside(mType, current) > 0.25 && ++strays > maximumStrays)
            return false;
        if (!(length < shortStep))
            continue;
        at = current;
        if constexpr (N < D)
        {
            const Box<D> box = bounds();
            const double across = maximumNorm(box.upper - box.lower);
            if (norm(offset) > locationTolerance * across + rounding())
                return false;
        }
        return isInside(at, inverse.norm(), position);
    }
}

template<std::size_t D>
bool CellGeometry<D>::contains(const Position& position, Reference& at) const
{
    const std::size_t dimension = dimensionOf(mType);
    if (dimension == 0)
    {
        at = {};
        return norm(position - mVertices[0]) <= rounding();
    }
    if (dimension == D && isSimplex(mType))
        return simplexContains(position, at);
    if constexpr (D >= 2)
        if (isMultilinear(mType, D))
            return multilinearContains(position, at);
    if constexpr (D >= 3)
        if (dimension == 3)
            return generalContains<3>(position, at);
    if constexpr (D >= 2)
        if (dimension == 2)
            return generalContains<2>(position, at);
    return dimension == 1 && generalContains<1>(position, at);
}

template class CellGeometry<1>;
template class CellGeometry<2>;
template class CellGeometry<3>;

}
