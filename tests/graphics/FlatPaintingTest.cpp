#include "Painting.hpp"

#include "../../host/graphics/painter/SampleBand.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <ranges>
#include <string>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::graphics;
using painter::SampleBand;

constexpr std::array<std::uint8_t, 3> red{200, 0, 0};
constexpr std::array<std::uint8_t, 3> blue{0, 0, 200};

std::vector<std::uint8_t> pixelsOf(const SampleBand& band, std::size_t width)
{
    std::vector<std::uint8_t> rgba(width * band.numRows() * 4);
    band.resolve(rgba.data());
    return rgba;
}

std::array<SampleBand::Pixel, 4> rectangle(float left, float top, float right, float bottom)
{
    return {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

TEST(SampleBand, CoversPixelsInProportion)
{
    SampleBand band(8, 10, 4);
    band.fillConvex(rectangle(1.5F, 11.0F, 6.25F, 12.5F), red);
    const auto rgba = pixelsOf(band, 8);
    const auto alpha = [&](std::size_t x, std::size_t y) { return int{rgba[(y * 8 + x) * 4 + 3]}; };
    EXPECT_EQ(alpha(0, 1), 0);
    EXPECT_NEAR(alpha(1, 1), 128, 1);
    EXPECT_EQ(alpha(2, 1), 255);
    EXPECT_EQ(alpha(5, 1), 255);
    EXPECT_NEAR(alpha(6, 1), 64, 1);
    EXPECT_NEAR(alpha(3, 2), 128, 1);
    EXPECT_NEAR(alpha(1, 2), 64, 1);
    EXPECT_EQ(alpha(3, 0), 0);
    EXPECT_EQ(alpha(3, 3), 0);
    // Colors are multiplied by alpha.
    EXPECT_NEAR(int{rgba[(2 * 8 + 3) * 4]}, 100, 1);
}

TEST(SampleBand, GivesEachSampleToTheFirstPolygon)
{
    SampleBand band(200, 0, 2);
    band.fillConvex(rectangle(50.0F, -5.0F, 100.5F, 50.0F), red);
    band.fillConvex(rectangle(-1e6F, -1e6F, 1e6F, 1e6F), blue);
    const auto rgba = pixelsOf(band, 200);
    const auto isAt = [&](std::size_t x, const std::array<std::uint8_t, 3>& color)
    { return std::equal(color.begin(), color.end(), rgba.begin() + static_cast<long>(4 * x)); };
    for (const std::size_t x : {0U, 49U, 101U, 199U})
        EXPECT_TRUE(isAt(x, blue)) << x;
    for (const std::size_t x : {50U, 99U})
        EXPECT_TRUE(isAt(x, red)) << x;
    EXPECT_TRUE(isAt(100, {100, 0, 100}));
    EXPECT_TRUE(std::ranges::all_of(std::views::iota(std::size_t{0}, rgba.size() / 4),
                                    [&](std::size_t i) { return rgba[4 * i + 3] == 255; }));
}

TEST(SampleBand, FillsTrianglesByTheirArea)
{
    SampleBand band(100, 0, 100);
    band.fillConvex(
        std::array<SampleBand::Pixel, 3>{{{10.3F, 5.1F}, {90.7F, 40.2F}, {30.0F, 95.5F}}}, red);
    const auto rgba = pixelsOf(band, 100);
    double sum = 0.0;
    for (std::size_t i = 0; i < rgba.size(); i += 4)
        sum += rgba[i + 3] / 255.0;
    const double area = 0.5 * std::abs((90.7 - 10.3) * (95.5 - 5.1) - (30.0 - 10.3) * (40.2 - 5.1));
    EXPECT_NEAR(sum, area, 0.01 * area);
}

ArrowGlyph arrow(const Vector3& start, const Vector3& direction, const Color& color,
                 double width = 0.2)
{
    return {start, direction, width, color, false};
}

TEST(FlatPainting, ArrowsHaveExactlyTheirColor)
{
    const Color color{100 / 255.0F, 150 / 255.0F, 40 / 255.0F, 1.0F};
    const Image image = paint({.drawables = {arrows({arrow({0, 0, 0}, {1, 0, 0}, color)})}},
                              {.width = 300, .height = 300}, neverAbort);
    const Pixel pixel = pixelAt(image, 100, 150);
    EXPECT_EQ(pixel.red, 100);
    EXPECT_EQ(pixel.green, 150);
    EXPECT_EQ(pixel.blue, 40);
}

TEST(FlatPainting, ShorterArrowsAreOnTopOfLongerOnes)
{
    const Color green{0.0F, 0.5F, 0.0F, 1.0F};
    const Color purple{0.5F, 0.0F, 0.5F, 1.0F};
    std::vector<ArrowGlyph> glyphs{arrow({-1, 0, 0}, {4, 0, 0}, green),
                                   arrow({0, -1, 0}, {0, 3, 0}, purple)};
    for (int i = 0; i < 2; ++i)
    {
        const Image image =
            paint({.drawables = {arrows(glyphs)}, .outline = Box{{-3, -3, 0}, {3, 3, 0}, 2}},
                  {.width = 120, .height = 120}, neverAbort);
        const Pixel middle = pixelAt(image, 60, 60);
        EXPECT_EQ(middle.green, 0);
        EXPECT_EQ(middle.red, 128);
        std::ranges::reverse(glyphs);
    }
}

TEST(FlatPainting, TransparentBackgroundsStayTransparent)
{
    const Image image =
        paint({.drawables = {arrows({arrow({0, 0, 0}, {1, 0, 0}, {0, 0, 0.5F, 1})})}},
              {.width = 100, .height = 100, .background = {0, 0, 0, 0}}, neverAbort);
    EXPECT_EQ(pixelAt(image, 50, 10).alpha, 0);
    EXPECT_EQ(pixelAt(image, 30, 50).alpha, 255);
    EXPECT_EQ(pixelAt(image, 30, 50).blue, 128);
}

std::string textOf(const PictureFile& picture)
{
    return {picture.bytes.begin(), picture.bytes.end()};
}

std::size_t countOf(const std::string& text, const std::string& word)
{
    std::size_t count = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

std::vector<ArrowGlyph> field(std::size_t count)
{
    std::vector<ArrowGlyph> glyphs;
    for (std::size_t i = 0; i < count; ++i)
        glyphs.push_back(arrow({static_cast<double>(i % 100), static_cast<double>(i / 100), 0},
                               {0.5, 0.3, 0}, {0.5F, 0.0F, 0.0F, 1.0F}, 0.05));
    return glyphs;
}

TEST(RenderPicture, WritesGlyphsAsVectorsUpToASensibleNumber)
{
    for (const auto& [count, isImage] : {std::pair(300U, false), std::pair(10001U, true)})
    {
        const Scene scene{.drawables = {arrows(field(count))},
                          .outline = Box{{0, 0, 0}, {100, 100, 0}, 2},
                          .colorBar = ColorBar{[](double) { return Color{}; }, 0.0, 1.0, "v"}};
        const PictureOptions options{.width = 400, .height = 300, .title = "Title"};
        const auto svg = renderPicture(scene, options, PictureFormat::Svg, neverAbort);
        const std::string text = textOf(svg);
        EXPECT_TRUE(text.starts_with("<?xml")) << text.substr(0, 100);
        EXPECT_NE(text.find("width=\"400px\" height=\"300px\""), std::string::npos)
            << text.substr(0, 300);
        EXPECT_EQ(countOf(text, "<image") > 0, isImage);
        // Each arrow has one fill, and a rim that keeps it apart from others.
        EXPECT_EQ(countOf(text, "fill:rgb(50%,0%,0%)"), isImage ? 0 : count);
        EXPECT_EQ(textOf(renderPicture(scene, options, PictureFormat::Svg, neverAbort)), text);

        const auto pdf = renderPicture(scene, options, PictureFormat::Pdf, neverAbort);
        EXPECT_TRUE(textOf(pdf).starts_with("%PDF-"));
        EXPECT_EQ(countOf(textOf(pdf), "/Subtype /Image") > 0, isImage);
        EXPECT_EQ(countOf(textOf(pdf), "CreationDate"), 0U);
        EXPECT_EQ(pdf.bytes, renderPicture(scene, options, PictureFormat::Pdf, neverAbort).bytes);
        EXPECT_EQ(pdf.width, 400U);
    }
}

TEST(RenderPicture, CropsEveryFormatToTheSameSize)
{
    const Scene scene{.drawables = {arrows(field(200))}, .outline = Box{{0, 0, 0}, {100, 2, 0}, 2}};
    PictureOptions options{.width = 800, .height = 600, .crop = true};
    const Image image = paint(scene, options, neverAbort);
    EXPECT_EQ(image.rgba.size(), image.width * image.height * 4);
    EXPECT_LE(image.width, 800U);
    EXPECT_LT(image.height, 200U);
    for (const PictureFormat format : {PictureFormat::Png, PictureFormat::Svg, PictureFormat::Pdf})
    {
        const auto picture = renderPicture(scene, options, format, neverAbort);
        EXPECT_EQ(picture.width, image.width);
        EXPECT_EQ(picture.height, image.height);
    }
}

TEST(RenderPicture, KnowsItsFormats)
{
    EXPECT_EQ(pictureFormatOf(".svg"), PictureFormat::Svg);
    EXPECT_EQ(pictureFormatOf(".pdf"), PictureFormat::Pdf);
    EXPECT_EQ(pictureFormatOf(".png"), PictureFormat::Png);
    EXPECT_EQ(pictureFormatOf(".jpg"), std::nullopt);
}

}
