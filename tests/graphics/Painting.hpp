#pragma once

#include <support/abortFlags.hpp>

#include <tavrin/graphics/ObjectRenderer.hpp>
#include <tavrin/graphics/Picture.hpp>

#include <gtest/gtest.h>

#include <initializer_list>

namespace tavrin::graphics
{

/// The reason why pictures cannot be painted on this machine; empty if they can.
inline const std::string& obstacleToPainting()
{
    static const std::string obstacle = []() -> std::string
    {
        try
        {
            const ArrowGlyph tube{{0, 0, 0}, {1, 0, 0}, 0.1, {}, true};
            paint({.drawables = {GraphicsSystem::makeArrows({tube}, ShadingType::Phong)}},
                  {.width = 8, .height = 8}, support::neverAbort);
            return {};
        }
        catch (const std::exception& error)
        {
            return error.what();
        }
    }();
    return obstacle;
}

/// Skips its tests if pictures cannot be painted.
class PaintingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (obstacleToPainting().starts_with("no OpenGL 3.3 context"))
            GTEST_SKIP() << obstacleToPainting();
        ASSERT_EQ(obstacleToPainting(), "");
    }
};

inline std::shared_ptr<Drawable> arrows(const std::vector<ArrowGlyph>& glyphs)
{
    return GraphicsSystem::makeArrows(glyphs, ShadingType::Phong);
}

struct Pixel
{
    int red;
    int green;
    int blue;
    int alpha;
};

inline Pixel pixelAt(const Image& image, std::size_t x, std::size_t y)
{
    const std::uint8_t* const rgba = image.rgba.data() + (y * image.width + x) * 4;
    return {rgba[0], rgba[1], rgba[2], rgba[3]};
}

template<typename Predicate>
std::size_t countPixels(const Image& image, Predicate predicate)
{
    std::size_t count = 0;
    for (std::size_t y = 0; y < image.height; ++y)
        for (std::size_t x = 0; x < image.width; ++x)
            count += predicate(pixelAt(image, x, y)) ? 1 : 0;
    return count;
}

inline bool isRed(const Pixel& pixel)
{
    return pixel.red > pixel.green + 80 && pixel.red > pixel.blue + 80;
}

inline bool isBlue(const Pixel& pixel)
{
    return pixel.blue > pixel.red + 80 && pixel.blue > pixel.green + 80;
}

/// The largest difference of any component of any pixel.
inline int largestDifference(const Image& a, const Image& b)
{
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    int largest = 0;
    for (std::size_t i = 0; i < std::min(a.rgba.size(), b.rgba.size()); ++i)
        largest = std::max(largest, std::abs(a.rgba[i] - b.rgba[i]));
    return largest;
}

/// The number of pixels that differ visibly. Rounding may move a sample across an edge.
inline std::size_t numDifferent(const Image& a, const Image& b)
{
    EXPECT_EQ(a.rgba.size(), b.rgba.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i + 3 < std::min(a.rgba.size(), b.rgba.size()); i += 4)
    {
        int largest = 0;
        for (std::size_t part = i; part < i + 4; ++part)
            largest = std::max(largest, std::abs(a.rgba[part] - b.rgba[part]));
        count += largest > 8 ? 1 : 0;
    }
    return count;
}

}
