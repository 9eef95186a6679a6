#include <tavrin/io/PointTree.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace
{

constexpr std::size_t maximumPointsOfLeaf = 8;

/// The maximum of dot(direction, point - origin) over the points of a box.
double boundOf(const Vector3& low, const Vector3& high, const Vector3& direction,
               const Vector3& origin)
{
    double bound = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        bound += std::max(direction[axis] * (low[axis] - origin[axis]),
                          direction[axis] * (high[axis] - origin[axis]));
    return bound;
}

}

PointTree::PointTree(std::vector<Vector3> points) : mPoints(std::move(points))
{
    if (!mPoints.empty())
        build(0, mPoints.size());
}

void PointTree::build(std::size_t first, std::size_t count)
{
    const auto begin = mPoints.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = begin + static_cast<std::ptrdiff_t>(count);
    Node node{first, count, *begin, *begin};
    for (auto point = begin; point != end; ++point)
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            node.low[axis] = std::min(node.low[axis], (*point)[axis]);
            node.high[axis] = std::max(node.high[axis], (*point)[axis]);
        }
    const std::size_t index = mNodes.size();
    mNodes.push_back(node);
    if (count <= maximumPointsOfLeaf)
        return;
    std::size_t longest = 0;
    for (std::size_t axis = 1; axis < 3; ++axis)
        if (node.high[axis] - node.low[axis] > node.high[longest] - node.low[longest])
            longest = axis;
    const std::size_t half = count / 2;
    std::nth_element(begin, begin + static_cast<std::ptrdiff_t>(half), end,
                     [&](const Vector3& a, const Vector3& b) { return a[longest] < b[longest]; });
    build(first, half);
    mNodes[index].second = mNodes.size();
    build(first + half, count - half);
}

double PointTree::maximumHeight(const Vector3& direction, const Vector3& origin, double least) const
{
    double maximum = least;
    if (!mNodes.empty())
        raise(0, direction, origin, maximum);
    return maximum;
}

void PointTree::raise(std::size_t index, const Vector3& direction, const Vector3& origin,
                      double& maximum) const
{
    const Node& node = mNodes[index];
    if (!(boundOf(node.low, node.high, direction, origin) > maximum))
        return;
    if (node.second == 0)
    {
        for (std::size_t i = node.first; i < node.first + node.count; ++i)
            maximum = std::max(maximum, dot(direction, mPoints[i] - origin));
        return;
    }
    // The child whose box reaches farther comes first: it may make the other one unnecessary.
    const Node& left = mNodes[index + 1];
    const Node& right = mNodes[node.second];
    const bool isLeftFirst = boundOf(left.low, left.high, direction, origin) >=
                             boundOf(right.low, right.high, direction, origin);
    raise(isLeftFirst ? index + 1 : node.second, direction, origin, maximum);
    raise(isLeftFirst ? node.second : index + 1, direction, origin, maximum);
}

}
