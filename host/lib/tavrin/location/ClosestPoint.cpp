#include <tavrin/location/ClosestPoint.hpp>

#include <tavrin/location/CellPatch.hpp>
#include <tavrin/location/Inverse.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavrin
{

namespace
{

/// Keeps the closest of several points of a cell.
template<std::size_t D>
class Closest
{
public:
    explicit Closest(double limit) : mDistance(limit) {}

    /// The distance of the closest point so far, or the limit.
    double distance() const { return mDistance; }

    /// `offset` leads from the position to the point.
    void offer(const Reference& at, const Tensor<double, D>& offset)
    {
        const double distance = norm(offset);
        if (mIsFound ? distance < mDistance : distance <= mDistance)
        {
            mDistance = distance;
            mAt = at;
            mIsFound = true;
        }
    }

    std::optional<ClosestPoint> result() const
    {
        return mIsFound ? std::optional(ClosestPoint{mAt, mDistance}) : std::nullopt;
    }

private:
    double mDistance;
    Reference mAt{};
    bool mIsFound = false;
};

/// The parameter of the point on the line from `start` along `edge` that is closest to the position.
template<std::size_t D>
double parameterOnEdge(const Tensor<double, D>& start, const Tensor<double, D>& edge,
                       const Tensor<double, D>& position)
{
    const double length = dot(edge, edge);
    return length > 0.0 ? std::clamp(dot(position - start, edge) / length, 0.0, 1.0) : 0.0;
}

/// `target` is the position relative to the first vertex.
template<std::size_t D>
void offerOfTriangle(const Tensor<double, D>* vertices, const Tensor<double, D>& target,
                     Closest<D>& closest)
{
    const Tensor<double, D> first = vertices[1] - vertices[0];
    const Tensor<double, D> second = vertices[2] - vertices[0];
    const double aa = dot(first, first);
    const double ab = dot(first, second);
    const double bb = dot(second, second);
    const double a = dot(first, target);
    const double b = dot(second, target);
    const double determinant = aa * bb - ab * ab;
    const double r = (bb * a - ab * b) / determinant;
    const double s = (aa * b - ab * a) / determinant;
    if (r >= 0.0 && s >= 0.0 && r + s <= 1.0)
        closest.offer({r, s, 0.0}, r * first + s * second - target);
    // In a needle the determinant is too inaccurate to rule out the edges.
    if (r > 0.0 && s > 0.0 && r + s < 1.0 && determinant > 1e-8 * aa * bb)
        return;
    const Tensor<double, D> none{};
    const double onFirst = parameterOnEdge(none, first, target);
    closest.offer({onFirst, 0.0, 0.0}, onFirst * first - target);
    const double onSecond = parameterOnEdge(none, second, target);
    closest.offer({0.0, onSecond, 0.0}, onSecond * second - target);
    const Tensor<double, D> third = second - first;
    const double onThird = parameterOnEdge(first, third, target);
    closest.offer({1.0 - onThird, onThird, 0.0}, first + onThird * third - target);
}

/// A quad as a polynomial of its reference coordinates, relative to the first vertex.
template<std::size_t D>
class BilinearPatch
{
public:
    using Position = Tensor<double, D>;

    explicit BilinearPatch(const Position* vertices)
        : mFirst(vertices[1] - vertices[0]), mSecond(vertices[3] - vertices[0]),
          mTwist(vertices[2] - vertices[1] - mSecond)
    {
    }

    template<std::size_t N>
    Position evaluate(const Reference& at, std::array<Position, N>& derivatives) const
    {
        derivatives = {mFirst + at[1] * mTwist, mSecond + at[0] * mTwist};
        return at[0] * derivatives[0] + at[1] * mSecond;
    }

    /// Whether the distance from any position no farther than `reach` has one local minimum. Its second
    /// derivatives by the coordinates are then positive definite within that distance, since the
    /// twist adds less than half to what they are for a parallelogram.
    bool hasOneMinimum(double reach) const
    {
        const double first = norm(mFirst);
        const double second = norm(mSecond);
        const double area = first * second - std::abs(dot(mFirst, mSecond));
        const double twist = norm(mTwist);
        return 8.0 * twist * std::max(first, second) < area && 2.0 * twist * reach < area;
    }

private:
    Position mFirst;
    Position mSecond;
    Position mTwist;
};

/// The closest point to `target` near cube coordinates of a cell: a local minimum of the distance within the
/// unit cube. The coordinates that are held do not change.
template<std::size_t N, std::size_t D, typename Patch>
void offerNear(Reference at, const std::array<bool, N>& isHeld, CellType type, const Patch& patch,
               const Tensor<double, D>& target, Closest<D>& closest)
{
    constexpr int maximumSteps = 40;
    constexpr double rounding = 4.0 * std::numeric_limits<double>::epsilon();
    std::array<Tensor<double, D>, N> derivatives;
    Tensor<double, D> offset = patch.template evaluate<N>(at, derivatives) - target;
    double damping = 1e-4;
    for (int step = 0; step < maximumSteps; ++step)
    {
        Tensor<double, N> descent;
        double largest = 0.0;
        for (std::size_t axis = 0; axis < N; ++axis)
        {
            descent[axis] = -dot(derivatives[axis], offset);
            largest = std::max(largest, dot(derivatives[axis], derivatives[axis]));
        }
        // Coordinates that descent would take out of the cube stay at its side.
        std::array<bool, N> isFixed;
        for (std::size_t axis = 0; axis < N; ++axis)
            isFixed[axis] = isHeld[axis] || (at[axis] <= 0.0 && descent[axis] < 0.0) ||
                            (at[axis] >= 1.0 && descent[axis] > 0.0);
        Columns<N> matrix{};
        for (std::size_t i = 0; i < N; ++i)
        {
            for (std::size_t j = 0; j < N; ++j)
                if (!isFixed[i] && !isFixed[j])
                    matrix[i][j] = dot(derivatives[i], derivatives[j]);
            matrix[i][i] += isFixed[i] ? largest : damping * largest;
            if (isFixed[i])
                descent[i] = 0.0;
        }
        const Inverse<N> inverse(matrix);
        const Tensor<double, N> change = inverse * descent;
        Reference next = at;
        double length = 0.0;
        for (std::size_t axis = 0; axis < N; ++axis)
        {
            next[axis] = std::clamp(at[axis] + change[axis], 0.0, 1.0);
            length = std::max(length, std::abs(next[axis] - at[axis]));
        }
        // Ends with steps that rounding causes, and with those that are not a number.
        if (!(length > rounding * (1.0 + norm(offset) / std::sqrt(largest))))
            break;
        std::array<Tensor<double, D>, N> slopes;
        const Tensor<double, D> trial = patch.template evaluate<N>(next, slopes) - target;
        // Close to the minimum the distance changes by less than its rounding.
        if (dot(trial, trial) <= (1.0 + rounding) * dot(offset, offset))
        {
            at = next;
            offset = trial;
            derivatives = slopes;
            damping *= 0.1;
        }
        else
            damping = std::max(10.0 * damping, 1e-6);
    }
    closest.offer(collapsedReference(type, at), offset);
}

template<std::size_t D>
double distanceOf(const Box<D>& box, const Tensor<double, D>& position)
{
    Tensor<double, D> gap;
    for (std::size_t axis = 0; axis < D; ++axis)
        gap[axis] =
            std::max({box.lower[axis] - position[axis], position[axis] - box.upper[axis], 0.0});
    return norm(gap);
}

template<std::size_t N, std::size_t D>
void offerOfParts(const CellPatch<D>& part, std::size_t depth, CellType type,
                  const CellPatch<D>& whole, const Tensor<double, D>& target, Closest<D>& closest)
{
    if (depth == 2 * N)
        return offerNear<N>(part.middle(), {}, type, whole, target, closest);
    const auto [first, second] = part.halves(depth % N);
    const double toFirst = distanceOf(first.box(), target);
    const double toSecond = distanceOf(second.box(), target);
    const bool isFirstNearer = toFirst <= toSecond;
    const auto offer = [&](const CellPatch<D>& half, double distance)
    {
        if (distance <= closest.distance())
            offerOfParts<N>(half, depth + 1, type, whole, target, closest);
    };
    offer(isFirstNearer ? first : second, isFirstNearer ? toFirst : toSecond);
    offer(isFirstNearer ? second : first, isFirstNearer ? toSecond : toFirst);
}

/// The edges of a cell of two dimensions. Where an edge of the cube collapses to a corner of the cell, the
/// search of the parts may end at that corner, though the distance decreases along an edge from there.
template<std::size_t D>
void offerOfEdges(CellType type, const CellPatch<D>& patch, const Tensor<double, D>& target,
                  Closest<D>& closest)
{
    const int numStarts = linearTypeOf(type) == type ? 1 : 4;
    for (const std::size_t axis : {0U, 1U})
        for (const double side : {0.0, 1.0})
            for (int i = 0; i < numStarts; ++i)
            {
                Reference start{};
                start[axis] = side;
                start[1 - axis] = (i + 0.5) / numStarts;
                offerNear<2>(start, {axis == 0, axis == 1}, type, patch, target, closest);
            }
}

}

template<std::size_t D>
std::optional<ClosestPoint> closestPoint(CellType type, const Tensor<double, D>* vertices,
                                         const Tensor<double, D>& position, double limit)
{
    const Tensor<double, D> target = position - vertices[0];
    Closest<D> closest(limit);
    if (type == CellType::Triangles)
    {
        offerOfTriangle(vertices, target, closest);
        return closest.result();
    }
    if (type == CellType::Lines)
    {
        const Tensor<double, D> edge = vertices[1] - vertices[0];
        const double along = parameterOnEdge(Tensor<double, D>{}, edge, target);
        closest.offer({along, 0.0, 0.0}, along * edge - target);
        return closest.result();
    }
    const std::size_t dimension = dimensionOf(type);
    if (dimension == 0)
    {
        closest.offer({}, -target);
        return closest.result();
    }
    if (type == CellType::Quads)
    {
        const BilinearPatch<D> quad(vertices);
        if (quad.hasOneMinimum(norm(target) + norm(vertices[2] - vertices[0])))
        {
            offerNear<2>(centerReference(type), {}, type, quad, target, closest);
            return closest.result();
        }
    }
    const CellPatch<D> patch(type, vertices);
    if (dimension == 1)
        offerOfParts<1>(patch, 0, type, patch, target, closest);
    else if (dimension == 2)
    {
        offerOfParts<2>(patch, 0, type, patch, target, closest);
        const auto inside = closest.result();
        if (!inside || distanceOutside(type, inside->at) >= 0.0)
            offerOfEdges(type, patch, target, closest);
    }
    else
        offerOfParts<3>(patch, 0, type, patch, target, closest);
    return closest.result();
}

template std::optional<ClosestPoint> closestPoint<1>(CellType, const Tensor<double, 1>*,
                                                     const Tensor<double, 1>&, double);
template std::optional<ClosestPoint> closestPoint<2>(CellType, const Tensor<double, 2>*,
                                                     const Tensor<double, 2>&, double);
template std::optional<ClosestPoint> closestPoint<3>(CellType, const Tensor<double, 3>*,
                                                     const Tensor<double, 3>&, double);

}
