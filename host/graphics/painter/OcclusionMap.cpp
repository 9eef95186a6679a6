#include "OcclusionMap.hpp"

#include <algorithm>
#include <limits>

namespace tavrin::graphics::painter
{

namespace
{

/// Eight steps of a depth buffer of 24 bits: what rounding in single precision may add up to on the
/// way of a vertex to its depth.
constexpr double depthTolerance = 8.0 / (1 << 24);

/// Larger than every depth: not even the background hides anything there.
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

bool OcclusionMap::hides(const Strip& strip, double depth) const
{
    const double left = strip.from[0] - mTile.left;
    const double top = strip.from[1] - mTile.top;
    const double alongX = strip.to[0] - strip.from[0];
    const double alongY = strip.to[1] - strip.from[1];
    const auto blockOf = [](double pixel, std::size_t count)
    {
        const double block = std::floor(pixel / static_cast<double>(blockSize));
        return static_cast<std::size_t>(std::clamp(block, 0.0, static_cast<double>(count - 1)));
    };
    const auto firstRow = blockOf(std::min(top, top + alongY) - strip.radius, mRows);
    const auto lastRow = blockOf(std::max(top, top + alongY) + strip.radius, mRows);
    for (std::size_t row = firstRow; row <= lastRow; ++row)
    {
        // The part of the segment whose surroundings reach into the row of blocks.
        const double upper = static_cast<double>(row * blockSize) - strip.radius;
        const double lower = static_cast<double>((row + 1) * blockSize) + strip.radius;
        double begin = 0.0;
        double end = 1.0;
        if (std::abs(alongY) > 1e-6)
        {
            const auto [enter, leave] = std::minmax((upper - top) / alongY, (lower - top) / alongY);
            begin = std::clamp(enter, 0.0, 1.0);
            end = std::clamp(leave, 0.0, 1.0);
        }
        const auto [least, greatest] = std::minmax(left + begin * alongX, left + end * alongX);
        const auto lastColumn = blockOf(greatest + strip.radius, mColumns);
        for (auto column = blockOf(least - strip.radius, mColumns); column <= lastColumn; ++column)
            if (mFarthest[row * mColumns + column] > depth + depthTolerance)
                return false;
    }
    return true;
}

}
