#include "SampleBand.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace tavrin::graphics::painter
{

namespace
{

constexpr std::size_t bitsPerWord = 64;

/// Shifts of the samples in the four rows of a pixel, in units of their distance, so that an upright
/// edge passes 16 positions on its way across a pixel.
constexpr std::array<float, 4> shifts{0.125F, 0.625F, 0.375F, 0.875F};

/// The smallest integer that is at least a number that is not negative.
std::size_t roundedUp(float number)
{
    const auto truncated = static_cast<std::int32_t>(number);
    return static_cast<std::size_t>(truncated + (static_cast<float>(truncated) < number ? 1 : 0));
}

}

SampleBand::SampleBand(std::size_t width, std::size_t top, std::size_t numRows)
    : mWidth(width), mTop(top), mNumRows(numRows),
      mWordsPerRow((width * samplesPerSide + bitsPerWord - 1) / bitsPerWord),
      mTaken(mWordsPerRow * numRows * samplesPerSide), mSums(width * numRows),
      mLeft(numRows * samplesPerSide), mRight(numRows * samplesPerSide)
{
}

void SampleBand::fillConvex(std::span<const Pixel> corners,
                            const std::array<std::uint8_t, 3>& color)
{
    constexpr auto side = static_cast<float>(samplesPerSide);
    const auto numSampleRows = static_cast<float>(mNumRows * samplesPerSide);
    const auto sampleY = [&](const Pixel& corner)
    { return (corner[1] - static_cast<float>(mTop)) * side - 0.5F; };
    /// The first row whose samples are not above a corner.
    const auto rowFrom = [&](const Pixel& corner) {
        return static_cast<std::size_t>(
            std::clamp(std::ceil(sampleY(corner)), 0.0F, numSampleRows));
    };
    const auto [highest, lowest] =
        std::ranges::minmax(corners, {}, [](const Pixel& corner) { return corner[1]; });
    const std::size_t first = rowFrom(highest);
    const std::size_t last = rowFrom(lowest);
    std::fill(mLeft.begin() + static_cast<std::ptrdiff_t>(first),
              mLeft.begin() + static_cast<std::ptrdiff_t>(last),
              std::numeric_limits<float>::infinity());
    std::fill(mRight.begin() + static_cast<std::ptrdiff_t>(first),
              mRight.begin() + static_cast<std::ptrdiff_t>(last),
              -std::numeric_limits<float>::infinity());
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const Pixel* upper = &corners[i];
        const Pixel* lower = &corners[i + 1 == corners.size() ? 0 : i + 1];
        if ((*upper)[1] > (*lower)[1])
            std::swap(upper, lower);
        const std::size_t begin = rowFrom(*upper);
        const std::size_t end = rowFrom(*lower);
        if (begin == end)
            continue;
        const float slope = ((*lower)[0] - (*upper)[0]) / ((*lower)[1] - (*upper)[1]);
        const float upperX = (*upper)[0] * side;
        const float upperY = sampleY(*upper);
        for (std::size_t row = begin; row < end; ++row)
        {
            const float x = upperX + (static_cast<float>(row) - upperY) * slope;
            mLeft[row] = std::min(mLeft[row], x);
            mRight[row] = std::max(mRight[row], x);
        }
    }
    const auto numSamples = static_cast<float>(mWidth * samplesPerSide);
    for (std::size_t row = first; row < last; ++row)
    {
        const float shift = shifts[row % samplesPerSide];
        const std::size_t from = roundedUp(std::clamp(mLeft[row] - shift, 0.0F, numSamples));
        const std::size_t to = roundedUp(std::clamp(mRight[row] - shift, 0.0F, numSamples));
        if (from < to)
            fillRow(row, from, to, color);
    }
}

void SampleBand::fillRow(std::size_t sampleRow, std::size_t from, std::size_t to,
                         const std::array<std::uint8_t, 3>& color)
{
    std::uint64_t* const words = mTaken.data() + sampleRow * mWordsPerRow;
    Sum* const sums = mSums.data() + sampleRow / samplesPerSide * mWidth;
    const std::size_t lastWord = (to - 1) / bitsPerWord;
    for (std::size_t word = from / bitsPerWord; word <= lastWord; ++word)
    {
        std::uint64_t taking = ~words[word];
        if (taking == 0)
            continue;
        const std::size_t start = word * bitsPerWord;
        if (from > start)
            taking &= ~std::uint64_t{0} << (from - start);
        if (to < start + bitsPerWord)
            taking &= ~(~std::uint64_t{0} << (to - start));
        words[word] |= taking;
        while (taking != 0)
        {
            const auto bit = static_cast<std::size_t>(std::countr_zero(taking));
            const std::size_t pixel = bit / samplesPerSide;
            const std::uint64_t ofPixel = taking & (std::uint64_t{0xF} << (pixel * samplesPerSide));
            const auto count = static_cast<unsigned>(std::popcount(ofPixel));
            Sum& sum = sums[start / samplesPerSide + pixel];
            for (std::size_t i = 0; i < 3; ++i)
                sum.color[i] = static_cast<std::uint16_t>(sum.color[i] + count * color[i]);
            sum.count = static_cast<std::uint16_t>(sum.count + count);
            taking ^= ofPixel;
        }
    }
}

void SampleBand::resolve(std::uint8_t* rgba) const
{
    const auto mean = [](unsigned sum)
    { return static_cast<std::uint8_t>((sum + samplesPerPixel / 2) / samplesPerPixel); };
    for (const Sum& sum : mSums)
    {
        for (const std::uint16_t part : sum.color)
            *rgba++ = mean(part);
        *rgba++ = mean(sum.count * 255U);
    }
}

}
