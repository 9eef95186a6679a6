#include "Painting.hpp"

#include "../../host/graphics/painter/PngEncoder.hpp"

#include <support/TemporaryFolder.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::graphics;
namespace fs = std::filesystem;

/// The pixels of a PNG file as opaque ones; an empty image if it cannot be read.
Image readPng(const fs::path& file)
{
    cairo_surface_t* const surface = cairo_image_surface_create_from_png(file.c_str());
    Image image;
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS)
    {
        image.width = static_cast<std::size_t>(cairo_image_surface_get_width(surface));
        image.height = static_cast<std::size_t>(cairo_image_surface_get_height(surface));
        const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
        const unsigned char* const data = cairo_image_surface_get_data(surface);
        for (std::size_t y = 0; y < image.height; ++y)
            for (std::size_t x = 0; x < image.width; ++x)
            {
                const unsigned char* const bgra = data + y * stride + x * 4;
                image.rgba.insert(image.rgba.end(), {bgra[2], bgra[1], bgra[0], 255});
            }
    }
    cairo_surface_destroy(surface);
    return image;
}

void writePng(const Image& image, const fs::path& file)
{
    process::Work work;
    const auto bytes = painter::encodePng(image, work);
    EXPECT_EQ(work.done, image.height);
    std::ofstream stream(file, std::ios::binary);
    std::ranges::copy(bytes, std::ostreambuf_iterator(stream));
}

/// The absolute differences of two images.
Image differenceOf(const Image& a, const Image& b)
{
    Image difference = a;
    for (std::size_t i = 0; i < a.rgba.size(); ++i)
        difference.rgba[i] =
            i % 4 == 3 ? 255 : static_cast<std::uint8_t>(std::abs(a.rgba[i] - b.rgba[i]));
    return difference;
}

/// Compares an image with a baseline. Drivers and fonts may cause small differences along edges.
/// Larger ones are a failure, and the picture and the difference are saved.
void expectBaseline(const Image& image, const std::string& name)
{
    const Image baseline = readPng(fs::path(TAVRIN_BASELINES) / (name + ".png"));
    const fs::path saved = fs::path(testing::TempDir());
    const auto save = [&](const Image& picture, const std::string& kind)
    {
        const fs::path file = saved / ("tavrin-" + name + "-" + kind + ".png");
        writePng(picture, file);
        return file.string();
    };
    if (baseline.width != image.width || baseline.height != image.height)
        FAIL() << "no baseline of this size; the picture is " << save(image, "picture");

    const Image difference = differenceOf(image, baseline);
    double sum = 0.0;
    std::size_t numFar = 0;
    for (std::size_t i = 0; i < difference.rgba.size(); i += 4)
    {
        const int largest =
            std::max({difference.rgba[i], difference.rgba[i + 1], difference.rgba[i + 2]});
        sum += largest;
        numFar += largest > 48 ? 1 : 0;
    }
    const auto numPixels = static_cast<double>(image.width * image.height);
    if (sum / numPixels > 1.5 || static_cast<double>(numFar) / numPixels > 0.01)
        FAIL() << "mean difference " << sum / numPixels << ", " << numFar << " pixels far off; see "
               << save(image, "picture") << " and " << save(difference, "difference");
}

/// A color map from blue to yellow.
Color ramp(double share)
{
    const auto s = static_cast<float>(share);
    return {0.1F + 0.85F * s, 0.2F + 0.6F * s, 0.6F - 0.5F * s, 1.0F};
}

std::vector<ArrowGlyph> vortex(int count, bool tube, float alpha)
{
    std::vector<ArrowGlyph> glyphs;
    for (int k = 0; k < (tube ? 3 : 1); ++k)
        for (int j = 0; j < count; ++j)
            for (int i = 0; i < count; ++i)
            {
                const Vector3 position(i, j, 2 * k);
                const double middle = 0.5 * (count - 1);
                Vector3 direction(middle - j, i - middle, tube ? 0.6 * k : 0.0);
                direction *= 0.4;
                const double speed = norm(direction);
                Color color = ramp(std::min(1.0, speed / 1.5));
                color.alpha = alpha;
                glyphs.push_back({position, direction, 0.06 * speed, color, tube});
            }
    return glyphs;
}

ColorBar speedBar()
{
    return {[](double value) { return ramp(std::min(1.0, value / 1.5)); }, 0.0, 1.5, "speed"};
}

using BaselineTest = PaintingTest;

TEST_F(BaselineTest, TubesInABox)
{
    expectBaseline(paint({.drawables = {arrows(vortex(5, true, 1.0F))},
                          .outline = Box{{0, 0, 0}, {4, 4, 4}, 3},
                          .colorBar = speedBar()},
                         {.width = 320, .height = 240}, neverAbort),
                   "tubes");
}

TEST_F(BaselineTest, FlatArrowsOnADarkSheet)
{
    expectBaseline(paint({.drawables = {arrows(vortex(7, false, 1.0F))},
                          .outline = Box{{0, 0, 0}, {6, 6, 0}, 2},
                          .colorBar = speedBar()},
                         {.width = 320, .height = 240, .background = {0.1F, 0.1F, 0.13F, 1.0F}},
                         neverAbort),
                   "flat-dark");
}

TEST_F(BaselineTest, TransparentTubes)
{
    expectBaseline(paint({.drawables = {arrows(vortex(4, true, 0.45F))},
                          .outline = Box{{0, 0, 0}, {3, 3, 4}, 3},
                          .colorBar = std::nullopt},
                         {.width = 240, .height = 200, .view = View::fromText("30,20")},
                         neverAbort),
                   "transparent");
}

TEST_F(PaintingTest, PngFilesHoldThePixels)
{
    Image image{.width = 3, .height = 2, .rgba = {}};
    for (std::uint8_t i = 0; i < 6; ++i)
        image.rgba.insert(image.rgba.end(), {i, static_cast<std::uint8_t>(40 * i), 7, 255});
    const TemporaryFolder folder;
    const fs::path file = folder / "pixels.png";
    writePng(image, file);
    EXPECT_EQ(readPng(file).rgba, image.rgba);
}

}
