#pragma once

#include "Camera.hpp"

#include <vector>

namespace tavrin::graphics::painter
{

/// The distance of the farthest visible surface in each block of pixels of a tile. A glyph that lies
/// behind it in every block that it meets is hidden and need not be drawn.
///
/// A hierarchical depth buffer of one level, as in N. Greene, M. Kass, G. Miller, "Hierarchical
/// Z-Buffer Visibility", SIGGRAPH 1993.
class OcclusionMap
{
public:
    /// All pixels within a radius of a segment.
    struct Strip
    {
        /// Pixels of the picture.
        std::array<double, 2> from;
        std::array<double, 2> to;
        double radius;
        /// The depth buffer's values for the nearest surface around each end.
        double depthFrom;
        double depthTo;
    };

    /// A map in which nothing is hidden.
    explicit OcclusionMap(const Frame& tile);

    /// `depths` are those of the tile's pixels, 0 (near) to 1, rows from below.
    void update(const std::vector<float>& depths);

    /// Whether a glyph that fills a strip is hidden. A glyph that is nearer by less than the resolution
    /// of the depth buffer counts as hidden: of coplanar glyphs, the first one drawn is on top.
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
    /// The depths of the blocks, rows from the top.
    std::vector<float> mFarthest;
};

}
