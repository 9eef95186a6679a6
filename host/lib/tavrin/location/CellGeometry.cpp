#include <tavrin/location/CellGeometry.hpp>

#include <tavrin/location/CellPatch.hpp>
#include <tavrin/location/ClosestPoint.hpp>
#include <tavrin/location/LocalMap.hpp>
#include <tavrin/location/MultilinearInversion.hpp>

#include <cassert>
#include <limits>

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
double CellGeometry<D>::largestRounding() const
{
    double largest = 0.0;
    for (std::size_t k = 0; k < numVerticesOf(mType); ++k)
        largest = std::max(largest, maximumNorm(mVertices[k]));
    return mRelativeRounding * largest;
}

/// The vertices' rounding counts by their weights: one that is far away does not make positions near the
/// others inaccurate. The rounding of computing with their differences in double precision is added.
template<std::size_t D>
double CellGeometry<D>::roundingAt(const Reference& at) const
{
    std::array<double, maximumVertices> weights;
    shapeFunctions(mType, at, weights);
    double size = 0.0;
    double extent = 0.0;
    for (std::size_t k = 0; k < numVerticesOf(mType); ++k)
    {
        size += std::abs(weights[k]) * maximumNorm(mVertices[k]);
        extent = std::max(extent, maximumNorm(mVertices[k] - mVertices[0]));
    }
    return mRelativeRounding * size + coordinateRounding * extent;
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
    const double allowance = std::min(largestTolerance, 3.0 * roundingAt(at) * inverseNorm);
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
        const NeedleInverse<D, D> needle(edges, largestRounding());
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
        if (searchFrom<N>(table.center, position, at) == Outcome::Inside)
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
        const Reference start = distanceOutside(mType, at) < 0.5 ? at : table.center;
        if (searchFrom<N>(start, position, at) == Outcome::Inside)
            return true;
        return 12.0 * bound >= provenDistortion && searchParts<N>(position, at);
    }
}

template<std::size_t D>
template<std::size_t N>
bool CellGeometry<D>::searchParts(const Position& position, Reference& at) const
{
    const Box<D> whole = bounds();
    const double margin =
        largestTolerance * maximumNorm(whole.upper - whole.lower) + largestRounding();
    const Position target = position - mVertices[0];
    const auto isCandidate = [&](const CellPatch<D>& part)
    {
        const Box<D> box = part.box();
        for (std::size_t axis = 0; axis < D; ++axis)
            if (target[axis] < box.lower[axis] - margin || target[axis] > box.upper[axis] + margin)
                return false;
        return true;
    };
    bool isFlat = true;
    const auto search = [&](const auto& searchIn, const CellPatch<D>& part,
                            std::size_t depth) -> bool
    {
        if (!isCandidate(part))
            return false;
        if (depth == 2 * N)
        {
            const Outcome outcome =
                searchFrom<N>(collapsedReference(mType, part.middle()), position, at);
            isFlat = isFlat && outcome == Outcome::Flat;
            return outcome == Outcome::Inside;
        }
        const auto [first, second] = part.halves(depth % N);
        return searchIn(searchIn, first, depth + 1) || searchIn(searchIn, second, depth + 1);
    };
    return search(search, CellPatch<D>(mType, mVertices), 0) || (!isFlat && touches(position, at));
}

/// Whether a point of the cell is as close to the position as rounding can tell. Where sides of the cell
/// collapse to that point, many reference points belong to it, and any of them will do.
template<std::size_t D>
bool CellGeometry<D>::touches(const Position& position, Reference& at) const
{
    const auto closest = closestPoint<D>(mType, mVertices, position, 3.0 * largestRounding());
    if (!closest || closest->distance > 3.0 * roundingAt(closest->at) ||
        !bounds().contains(position))
        return false;
    at = closest->at;
    return true;
}

template<std::size_t D>
template<std::size_t N>
auto CellGeometry<D>::searchFrom(const Reference& start, const Position& position,
                                 Reference& at) const -> Outcome
{
    const std::size_t count = numVerticesOf(mType);
    std::array<double, maximumVertices> weights;
    std::array<std::array<double, 3>, maximumVertices> slopes;
    const Position target = position - mVertices[0];
    const double resolution = largestRounding();
    Reference current = start;
    int strays = 0;
    for (int i = 0;; ++i)
    {
        shapeFunctions(mType, current, weights);
        shapeDerivatives(mType, current, slopes);
        const LocalMap<D, N> map(std::span(mVertices, count), weights, slopes);
        const LocalInverse<D, N> inverse(map, resolution);
        // A cell that is flat as a whole contains nothing.
        if (i == 0 && !inverse.exists())
            return Outcome::Flat;
        const Position offset = target - map.position;
        if (!inverse.exists() || i == maximumSteps)
        {
            at = current;
            const double norm = inverse.exists() ? inverse.norm() : 0.0;
            return maximumNorm(offset) <= resolution && isInside(at, norm, position)
                       ? Outcome::Inside
                       : Outcome::NotFound;
        }
        const Tensor<double, N> step = inverse.step(offset);
        const double length = maximumNorm(step);
        current = moved(current, step * std::min(1.0, 0.5 / length));
        for (double& coordinate : current)
            coordinate = std::clamp(coordinate, -0.5, 1.5);
        if (distanceOutside(mType, current) > 0.25 && ++strays > maximumStrays)
            return Outcome::NotFound;
        if (!(length < shortStep))
            continue;
        at = current;
        if constexpr (N < D)
            if (norm(offset) > locationTolerance * map.smallestExtent() + roundingAt(current))
                return Outcome::NotFound;
        return isInside(at, inverse.norm(), position) ? Outcome::Inside : Outcome::NotFound;
    }
}

template<std::size_t D>
bool CellGeometry<D>::contains(const Position& position, Reference& at) const
{
    const std::size_t dimension = dimensionOf(mType);
    if (dimension == 0)
    {
        at = {};
        return norm(position - mVertices[0]) <= largestRounding();
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
