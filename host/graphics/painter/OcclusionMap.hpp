#pragma once

#include "Camera.hpp"

#include <vector>

namespace tavrin::graphics::painter
{

/// How far away the farthest visible surface is in each block of a tile: what lies behind it
/// everywhere in its reach is hidden and need not be drawn.
///
/// A hierarchical depth buffer of one level, as in N. Greene, M. Kass, G. Miller, "Hierarchical
/// Z-Buffer Visibility", SIGGRAPH 1993.
class OcclusionMap
{
public:
    /// The surroundings of a segment.
    struct Strip
    {
        /// Pixels of the picture.
        std::array<double, 2> from;
        std::array<double, 2> to;
        double radius;
        /// What the depth buffer holds for the nearest surface around both ends.
        double depthFrom;
        double depthTo;
    };

    /// Nothing is hidden.
    explicit OcclusionMap(const Frame& tile);

    /// `depths` are those of the tile's pixels, 0 (near) to 1, rows from below.
    void update(const std::vector<float>& depths);

    /// Whether something that fills a strip is hidden. What is nearer by less than the depth buffer
    /// tells apart counts as hidden, so that of coplanar things the first one drawn is on top.
    bool hides(const Strip& strip) const;

private:
    /// Side of a block, in pixels.
    static constexpr std::size_t blockSize = 4;

    float& farthest(std::size_t column, std::size_t row)
    {
        return mFarthest[row * mColumns + column];
    }

    Frame mTile;
    std::size_t mColumns;
    std::size_t mRows;
    /// Of each block, rows from above.
    std::vector<float> mFarthest;
};

}
