#include "OcclusionMap.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavrin::graphics::painter
{

namespace
{

/// Eight steps of a depth buffer of 24 bits, a bound on the rounding errors when the depth of a vertex
/// is computed in single precision.
constexpr double depthTolerance = 8.0 / (1 << 24);

/// Larger than every depth, for blocks in which the background is visible.
constexpr float openDepth = std::numeric_limits<float>::infinity();

std::size_t numBlocks(double pixels, std::size_t blockSize)
{
    return (static_cast<std::size_t>(pixels) + blockSize - 1) / blockSize;
}

}

OcclusionMap::OcclusionMap(const Frame& tile)
    : mTile(tile), mColumns(numBlocks(tile.width, blockSize)),
      mRows(numBlocks(tile.height, blockSize)), mFarthest(mColumns * mRows, openDepth)
{
}

void OcclusionMap::update(const std::vector<float>& depths)
{
    const auto width = static_cast<std::size_t>(mTile.width);
    const auto height = static_cast<std::size_t>(mTile.height);
    std::ranges::fill(mFarthest, 0.0F);
    for (std::size_t y = 0; y < height; ++y)
    {
        const std::size_t row = (height - 1 - y) / blockSize;
        const float* const line = depths.data() + y * width;
        for (std::size_t x = 0; x < width; ++x)
        {
            float& block = farthest(x / blockSize, row);
            block = std::max(block, line[x]);
        }
    }
    for (float& depth : mFarthest)
        depth = depth < 1.0F ? depth : openDepth;
}

bool OcclusionMap::hides(const Strip& strip) const
{
    // Visits the slabs of blocks that the segment crosses. A slab is one block thick along the axis
    // along which the segment is longer.
    const std::array origin{strip.from[0] - mTile.left, strip.from[1] - mTile.top};
    const std::array extent{strip.to[0] - strip.from[0], strip.to[1] - strip.from[1]};
    const std::array numBlocks{mColumns, mRows};
    const std::size_t along = std::abs(extent[0]) >= std::abs(extent[1]) ? 0 : 1;
    const std::size_t across = 1 - along;
    const std::array strides =
        along == 0 ? std::array{std::size_t{1}, mColumns} : std::array{mColumns, std::size_t{1}};
    /// The first and the last block between two pixels.
    const auto blocksBetween = [&](double a, double b, std::size_t axis)
    {
        const auto blockOf = [&](double pixel)
        {
            const double block = std::floor(pixel / static_cast<double>(blockSize));
            const auto last = static_cast<double>(numBlocks[axis] - 1);
            return static_cast<std::size_t>(std::clamp(block, 0.0, last));
        };
        return std::pair(blockOf(std::min(a, b) - strip.radius),
                         blockOf(std::max(a, b) + strip.radius));
    };
    const auto [firstSlab, lastSlab] =
        blocksBetween(origin[along], origin[along] + extent[along], along);
    for (std::size_t slab = firstSlab; slab <= lastSlab; ++slab)
    {
        // The part of the segment whose surroundings reach into the slab.
        double begin = 0.0;
        double end = 1.0;
        if (std::abs(extent[along]) > 1.0)
        {
            const double low = static_cast<double>(slab * blockSize) - strip.radius;
            const double high = static_cast<double>((slab + 1) * blockSize) + strip.radius;
            begin = std::clamp((low - origin[along]) / extent[along], 0.0, 1.0);
            end = std::clamp((high - origin[along]) / extent[along], 0.0, 1.0);
        }
        // Depths are linear in the picture.
        const double depth = std::min(std::lerp(strip.depthFrom, strip.depthTo, begin),
                                      std::lerp(strip.depthFrom, strip.depthTo, end));
        const auto [first, last] = blocksBetween(origin[across] + begin * extent[across],
                                                 origin[across] + end * extent[across], across);
        for (std::size_t block = first; block <= last; ++block)
            if (mFarthest[slab * strides[0] + block * strides[1]] > depth + depthTolerance)
                return false;
    }
    return true;
}

}
