#pragma once

#include <tavrin/value/Tensor.hpp>

#include <vector>

namespace tavrin::io
{

/// Points sorted into a tree of boxes, to find the farthest point in a direction without looking at
/// all of them.
class PointTree
{
public:
    explicit PointTree(std::vector<Vector3> points);

    /// The maximum of dot(direction, point - origin) over all points, or `least` if that is larger.
    double maximumHeight(const Vector3& direction, const Vector3& origin, double least) const;

private:
    struct Node
    {
        std::size_t first;
        std::size_t count;
        Vector3 low;
        Vector3 high;
        /// The second child; the first one follows its parent. 0 for a leaf.
        std::size_t second = 0;
    };
    void build(std::size_t first, std::size_t count);
    void raise(std::size_t index, const Vector3& direction, const Vector3& origin,
               double& maximum) const;

    std::vector<Vector3> mPoints;
    std::vector<Node> mNodes;
};

}
