#include <tavrin/graphics/BoundingSphere.hpp>

#include <tavrin/base/Processors.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

namespace tavrin::graphics
{

namespace
{

using Position = Tensor<double, 3>;
using Points = std::span<const Tensor<float, 3>>;

/// A point counts as enclosed if it is farther than the radius by at most this fraction of it. A
/// point that is farther by a fraction d enlarges the smallest sphere by at most d * d / 2 of its
/// radius, which is below rounding for a d below this.
constexpr double tolerance = 3e-8;

Position widened(const Tensor<float, 3>& point)
{
    return Position(point[0], point[1], point[2]);
}

/// `center` is relative to `origin`, which is one of the points: differences of floats are exact in
/// double precision.
double squaredDistance(const Tensor<float, 3>& point, const Position& origin,
                       const Position& center)
{
    const double x = point[0] - origin[0] - center[0];
    const double y = point[1] - origin[1] - center[1];
    const double z = point[2] - origin[2] - center[2];
    return x * x + y * y + z * z;
}

struct Farthest
{
    std::size_t index = 0;
    double distance = -1.0;
};

/// The largest squared distance of a finite point; -1 if there is none.
TAVRIN_FOR_SEVERAL_PROCESSORS double largestSquare(Points points, const Position& origin,
                                                   const Position& center)
{
    // Squared distances of finite floats are finite in double precision, so an infinite one means a
    // point that is not finite.
    constexpr double largest = std::numeric_limits<double>::max();
    double maximum = -1.0;
#pragma omp simd reduction(max : maximum)
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const double square = squaredDistance(points[i], origin, center);
        const double finite = square <= largest ? square : -1.0;
        maximum = maximum > finite ? maximum : finite;
    }
    return maximum;
}

/// The first of the finite points that are farthest from the center; distance -1 if there is none.
Farthest findFarthest(Points points, const Position& origin, const Position& center)
{
    constexpr std::size_t blockSize = 4096;
    const std::size_t numBlocks = (points.size() + blockSize - 1) / blockSize;
    std::vector<double> maxima(numBlocks);
    const auto blockEnd = [&](std::size_t block)
    { return std::min(points.size(), (block + 1) * blockSize); };

#pragma omp parallel for schedule(static) if (numBlocks > 8)
    for (std::size_t block = 0; block < numBlocks; ++block)
    {
        const std::size_t first = block * blockSize;
        maxima[block] =
            largestSquare(points.subspan(first, blockEnd(block) - first), origin, center);
    }

    const auto best = std::max_element(maxima.begin(), maxima.end());
    if (best == maxima.end() || *best < 0.0)
        return {};
    const auto block = static_cast<std::size_t>(best - maxima.begin());
    for (std::size_t i = block * blockSize; i < blockEnd(block); ++i)
        if (squaredDistance(points[i], origin, center) == *best)
            return {i, std::sqrt(*best)};
    return {};
}

/// The point in the span of up to three differences that is equally far from the origin and from
/// each of them: the solution of d_i . c = |d_i|^2 / 2. Nothing if they are linearly dependent.
std::optional<Position> circumcenter(std::span<const Position> differences)
{
    // Gram matrix and right-hand side; Gaussian elimination with full pivoting on the diagonal.
    const std::size_t n = differences.size();
    std::array<std::array<double, 4>, 3> rows{};
    for (std::size_t i = 0; i < n; ++i)
    {
        for (std::size_t j = 0; j < n; ++j)
            rows[i][j] = dot(differences[i], differences[j]);
        rows[i][3] = 0.5 * rows[i][i];
    }
    std::array<bool, 3> done{};
    for (std::size_t step = 0; step < n; ++step)
    {
        std::size_t pivot = n;
        for (std::size_t i = 0; i < n; ++i)
            if (!done[i] && (pivot == n || rows[i][i] > rows[pivot][pivot]))
                pivot = i;
        if (!(rows[pivot][pivot] > 0.0))
            return std::nullopt;
        done[pivot] = true;
        for (std::size_t i = 0; i < n; ++i)
        {
            if (i == pivot)
                continue;
            const double factor = rows[i][pivot] / rows[pivot][pivot];
            for (std::size_t j = 0; j < 4; ++j)
                rows[i][j] -= factor * rows[pivot][j];
        }
    }
    Position center{};
    for (std::size_t i = 0; i < n; ++i)
        center += (rows[i][3] / rows[i][i]) * differences[i];
    return center;
}

/// A sphere and the points that determine it.
struct SupportedSphere
{
    BoundingSphere sphere;
    std::vector<Position> support;
};

/// The smallest sphere around at most five points. The circumsphere of each subset of up to four is
/// grown until it encloses all of them, and the smallest wins: one that is ill-conditioned is large
/// and loses.
SupportedSphere smallestAroundFew(const std::vector<Position>& points)
{
    SupportedSphere best{{points.front(), std::numeric_limits<double>::infinity()}, {}};
    for (unsigned subset = 1; subset < (1U << points.size()); ++subset)
    {
        std::vector<Position> support;
        std::vector<Position> differences;
        for (std::size_t i = 0; i < points.size(); ++i)
            if ((subset >> i & 1U) != 0)
                support.push_back(points[i]);
        if (support.size() > 4)
            continue;
        for (std::size_t i = 1; i < support.size(); ++i)
            differences.push_back(support[i] - support[0]);
        const auto offset = circumcenter(differences);
        if (!offset)
            continue;
        BoundingSphere sphere{support[0] + *offset, 0.0};
        for (const Position& point : points)
            sphere.radius = std::max(sphere.radius, norm(point - sphere.center));
        if (sphere.radius < best.sphere.radius)
            best = {sphere, support};
    }
    return best;
}

}

BoundingSphere computeBoundingSphere(Points points)
{
    const Farthest first = findFarthest(points, Position{}, Position{});
    if (first.distance < 0.0)
        return {};

    const Position origin = widened(points[first.index]);
    SupportedSphere current{{Position{}, 0.0}, {Position{}}};
    for (;;)
    {
        const Farthest farthest = findFarthest(points, origin, current.sphere.center);
        if (farthest.distance <= current.sphere.radius * (1.0 + tolerance))
            break;
        std::vector<Position> few = current.support;
        few.push_back(widened(points[farthest.index]) - origin);
        SupportedSphere next = smallestAroundFew(few);
        // The smallest sphere around more points is larger, except for rounding.
        if (next.sphere.radius <= current.sphere.radius)
            break;
        current = std::move(next);
    }
    const Position center = origin + current.sphere.center;
    return {center, findFarthest(points, center, Position{}).distance};
}

}
