#pragma once

#include <tavrin/value/Color.hpp>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tavrin::graphics::painter
{

/// Some rows of pixels, in which opaque polygons are drawn from the nearest to the farthest.
///
/// A pixel has 4 x 4 samples. Each takes the color of the first polygon that covers it, and a polygon
/// costs only the samples that are still free, apart from a test of each row that it meets. So the time
/// does not depend on how often polygons cover one another.
class SampleBand
{
public:
    using Pixel = std::array<float, 2>;

    /// The rows `top` ... `top + numRows - 1` of a picture.
    SampleBand(std::size_t width, std::size_t top, std::size_t numRows);

    /// Takes the free samples in a convex polygon, whose corners are in pixels of the picture.
    void fillConvex(std::span<const Pixel> corners, const std::array<std::uint8_t, 3>& color);

    std::size_t top() const { return mTop; }
    std::size_t numRows() const { return mNumRows; }

    /// Writes red, green, blue and alpha of the pixels, rows from the top, with colors multiplied by
    /// their alpha.
    void resolve(std::uint8_t* rgba) const;

private:
    static constexpr std::size_t samplesPerSide = 4;
    static constexpr std::size_t samplesPerPixel = samplesPerSide * samplesPerSide;

    /// Sums over the samples of a pixel that are taken.
    struct Sum
    {
        std::array<std::uint16_t, 3> color{};
        std::uint16_t count = 0;
    };

    void fillRow(std::size_t sampleRow, std::size_t from, std::size_t to,
                 const std::array<std::uint8_t, 3>& color);

    std::size_t mWidth;
    std::size_t mTop;
    std::size_t mNumRows;
    std::size_t mWordsPerRow;
    /// A bit for each sample that is taken.
    std::vector<std::uint64_t> mTaken;
    std::vector<Sum> mSums;
    /// The ends of the polygon that is being filled in each row of samples.
    std::vector<float> mLeft;
    std::vector<float> mRight;
};

}
