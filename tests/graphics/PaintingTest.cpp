#include "Painting.hpp"

#include <support/TemporaryFolder.hpp>
#include <support/errorOf.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <thread>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::graphics;

constexpr Color red{0.9F, 0.1F, 0.1F, 1.0F};
constexpr Color blue{0.1F, 0.1F, 0.9F, 1.0F};
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

PictureOptions small()
{
    return {.width = 120, .height = 120};
}

Image paintArrows(const std::vector<ArrowGlyph>& glyphs, const PictureOptions& options = small())
{
    return paint({.drawables = {arrows(glyphs)}}, options, neverAbort);
}

std::size_t countInk(const Image& image)
{
    return countPixels(image,
                       [](const Pixel& pixel) {
                           return std::min({pixel.red, pixel.green, pixel.blue}) < 200;
                       });
}

std::string lineFolder()
{
    return PluginRegistrationService::getInstance().getResourcePath("utils/Graphics") +
           "shader/line/noShading/multiColor/";
}

std::shared_ptr<Drawable> segments(std::vector<Tensor<float, 3>> vertices,
                                   std::vector<Color> colors, float width,
                                   RenderBin bin = RenderBin::Opaque)
{
    const std::string folder = lineFolder();
    return GraphicsSystem::makePrimitive(
        PrimitiveConfig(RenderPrimitives::Lines)
            .renderBin(bin)
            .vertexBuffer("in_vertex", GraphicsSystem::makeBuffer(std::move(vertices)))
            .vertexBuffer("in_color",
                          GraphicsSystem::makeBuffer(std::move(colors), ColorChannel::RGBA))
            .uniform("u_lineWidth", width),
        GraphicsSystem::makeProgram(folder + "vertex.glsl", folder + "fragment.glsl",
                                    folder + "geometry.glsl"));
}

std::vector<ArrowGlyph> randomArrows(std::size_t count, float alpha, bool tube)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::vector<ArrowGlyph> glyphs;
    for (std::size_t i = 0; i < count; ++i)
    {
        const auto share = [&] { return static_cast<float>(uniform(random)); };
        glyphs.push_back({{uniform(random), uniform(random), uniform(random)},
                          {uniform(random) - 0.5, uniform(random) - 0.5, uniform(random) - 0.5},
                          0.05,
                          {share(), share(), share(), alpha},
                          tube});
    }
    return glyphs;
}

std::vector<ArrowGlyph> moved(std::vector<ArrowGlyph> glyphs, const Vector3& offset)
{
    for (ArrowGlyph& glyph : glyphs)
        glyph.start += offset;
    return glyphs;
}

/// Tests for both kinds of arrows.
class ArrowPaintingTest : public PaintingTest, public testing::WithParamInterface<bool>
{};

INSTANTIATE_TEST_SUITE_P(Kinds, ArrowPaintingTest, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Tube" : "Flat"; });

TEST_P(ArrowPaintingTest, ArrowsAreWhereTheyShouldBe)
{
    const Image image = paintArrows({{{0, 0, 0}, {1, 0, 0}, 0.05, red, GetParam()},
                                     {{0, 0, 0}, {0, 1, 0}, 0.05, blue, GetParam()}});
    // The view is along z: x points to the right at the bottom, y upward at the left, within a margin
    // of 3 % and half a head.
    EXPECT_TRUE(isRed(pixelAt(image, 60, 107)));
    EXPECT_TRUE(isBlue(pixelAt(image, 12, 60)));
    EXPECT_EQ(pixelAt(image, 60, 60).green, 255);
    // The head is wider than the shaft, and at the far end.
    const auto thickness = [&](std::size_t x)
    {
        std::size_t count = 0;
        for (std::size_t y = 90; y < 120; ++y)
            count += isRed(pixelAt(image, x, y)) ? 1 : 0;
        return count;
    };
    EXPECT_GE(thickness(86), thickness(50) + 2);
    EXPECT_LE(thickness(114), thickness(50));
}

TEST_P(ArrowPaintingTest, ThickArrowsAreNotCut)
{
    for (const Vector3& direction : {Vector3(1, 0, 0), Vector3(1, 2, 0), Vector3(1, 1, 1)})
    {
        const Image image = paintArrows({{{0, 0, 0}, direction, 0.6, red, GetParam()}});
        EXPECT_GT(countInk(image), 1000U);
        for (std::size_t i = 0; i < 120; ++i)
            for (const auto& [x, y] : {std::pair(i, 0UL), {i, 119UL}, {0UL, i}, {119UL, i}})
                EXPECT_EQ(pixelAt(image, x, y).green, 255) << x << " " << y;
    }
}

TEST_P(ArrowPaintingTest, FarFromTheOriginNothingChanges)
{
    const auto glyphs = randomArrows(40, 1.0F, GetParam());
    const Vector3 offset(1e7, -2e7, 3e7);
    EXPECT_LE(numDifferent(paintArrows(glyphs), paintArrows(moved(glyphs, offset))), 5U);
}

TEST_P(ArrowPaintingTest, SizeDoesNotMatter)
{
    const auto glyphs = randomArrows(40, 1.0F, GetParam());
    const Image image = paintArrows(glyphs);
    for (const double factor : {1e-120, 1e-30, 1e30, 1e120})
    {
        auto scaled = glyphs;
        for (ArrowGlyph& glyph : scaled)
        {
            glyph.start *= factor;
            glyph.direction *= factor;
            glyph.width *= factor;
        }
        EXPECT_LE(numDifferent(image, paintArrows(scaled)), 5U) << factor;
    }
}

TEST_P(ArrowPaintingTest, TransparentArrowsMayComeInAnyOrder)
{
    auto glyphs = randomArrows(60, 0.4F, GetParam());
    const Image forwards = paintArrows(glyphs);
    std::ranges::reverse(glyphs);
    EXPECT_LE(largestDifference(forwards, paintArrows(glyphs)), 1);
    EXPECT_GT(countInk(forwards), 1000U);
}

TEST_P(ArrowPaintingTest, NearArrowsHideFarOnes)
{
    std::vector<ArrowGlyph> glyphs{{{0, 0, 1}, {1, 0, 0}, 0.1, red, GetParam()},
                                   {{0, 0, 0}, {1, 0, 0}, 0.1, blue, GetParam()}};
    PictureOptions options = small();
    options.view = View::fromText("z");
    for (int i = 0; i < 2; ++i)
    {
        const Image image = paintArrows(glyphs, options);
        EXPECT_GT(countPixels(image, isRed), 500U);
        EXPECT_EQ(countPixels(image, isBlue), 0U);
        std::ranges::reverse(glyphs);
    }
}

TEST_P(ArrowPaintingTest, OddArrowsDoNoHarm)
{
    const bool tube = GetParam();
    const ArrowGlyph good{{0, 0, 0}, {1, 1, 0}, 0.05, red, tube};
    const Image image = paintArrows({good});
    EXPECT_GT(countPixels(image, isRed), 100U);

    std::vector<ArrowGlyph> glyphs{good,
                                   {{nan, 0, 0}, {1, 0, 0}, 0.05, blue, tube},
                                   {{0, 0, 0}, {0, infinity, 0}, 0.05, blue, tube},
                                   {{0, 0, 0}, {1, 0, 0}, nan, blue, tube},
                                   {{0, 0, 0}, {1, 0, 0}, 0.05, {0, 0, 1, 0}, tube},
                                   {{0, 0, 0}, {1, 0, 0}, 0.05, {0, 0, 1, NAN}, tube}};
    EXPECT_EQ(paintArrows(glyphs).rgba, image.rgba);

    EXPECT_EQ(countInk(paintArrows({})), 0U);
    EXPECT_EQ(countInk(paintArrows({glyphs[1]})), 0U);
    // A vector of length 0 is drawn as a dot, and so is one that is far too small to be seen.
    for (const double length : {0.0, 1e-5})
    {
        const std::size_t dot =
            countInk(paintArrows({{{0.5, 0.5, 0}, {length, 0, 0}, 0, blue, tube},
                                  {{0, 0, 0}, {1, 0, 0}, 0.0, {1, 1, 1}, tube},
                                  {{0, 1, 0}, {1, 0, 0}, 0.0, {1, 1, 1}, tube}}));
        EXPECT_GE(dot, 1U);
        EXPECT_LE(dot, 30U);
    }
    // An arrow of width 0 is as thin as can be seen.
    EXPECT_GT(countInk(paintArrows({{{0, 0, 0}, {1, 0, 0}, 0.0, blue, tube}})), 80U);
}

TEST_F(PaintingTest, ColorsShineThroughByTheirAlpha)
{
    const auto overlap = [](float alpha)
    {
        Color front = red;
        front.alpha = alpha;
        PictureOptions options = small();
        options.view = View::fromText("z");
        const Image image =
            paint({.drawables = {segments({{0, 0, 0}, {1, 0, 0}}, {blue, blue}, 40.0F),
                                 segments({{0, 0, 1}, {1, 0, 1}}, {front, front}, 40.0F,
                                          RenderBin::Transparent)}},
                  options, neverAbort);
        return pixelAt(image, 60, 60);
    };
    const Pixel half = overlap(0.5F);
    EXPECT_NEAR(half.red, 128, 3);
    EXPECT_NEAR(half.blue, 128, 3);
    EXPECT_TRUE(isBlue(overlap(0.0F)));
    EXPECT_TRUE(isRed(overlap(1.0F)));
}

TEST_F(PaintingTest, LinesHaveTheirWidthInProportionToThePicture)
{
    const auto height = [](float width, std::size_t side)
    {
        const Image image =
            paint({.drawables = {segments({{0, 0, 0}, {1, 0, 0}}, {red, red}, width)}},
                  {.width = side, .height = side}, neverAbort);
        double sum = 0.0;
        for (std::size_t y = 0; y < side; ++y)
            sum += (255.0 - pixelAt(image, side / 2, y).green) / 255.0 / (1.0 - red.green);
        return sum;
    };
    EXPECT_NEAR(height(0.0F, 1280), 1.0, 0.05);
    EXPECT_NEAR(height(4.0F, 1280), 4.0, 0.05);
    EXPECT_NEAR(height(20.0F, 1280), 20.0, 0.05);
    EXPECT_NEAR(height(20.0F, 640), 10.0, 0.05);
    EXPECT_NEAR(height(4.0F, 2560), 8.0, 0.05);
    EXPECT_NEAR(height(0.1F, 640), 1.0, 0.05);
}

TEST_F(PaintingTest, OddLinesDoNoHarm)
{
    const float floatNan = std::numeric_limits<float>::quiet_NaN();
    const Image image =
        paint({.drawables = {segments({{0, 0, 0}, {1, 1, 0}, {0, 0, 0}, {floatNan, 0, 0}},
                                      {red, red, blue, blue}, 3.0F),
                             segments({}, {}, 3.0F), nullptr}},
              small(), neverAbort);
    EXPECT_GT(countPixels(image, isRed), 100U);
    EXPECT_EQ(countPixels(image, isBlue), 0U);
    const Image far = paint(
        {.drawables = {segments({{1e7F, 1e7F, 0}, {1e7F + 100, 1e7F + 100, 0}}, {red, red}, 3.0F)}},
        small(), neverAbort);
    const Image near =
        paint({.drawables = {segments({{0, 0, 0}, {100, 100, 0}}, {red, red}, 3.0F)}}, small(),
              neverAbort);
    EXPECT_LE(largestDifference(near, far), 2);
}

TEST_F(PaintingTest, TextIsReadableOnEveryBackground)
{
    const Scene scene{.drawables = {},
                      .outline = Box{{0, 0, 0}, {1, 1, 0}, 2},
                      .colorBar = ColorBar{[](double) { return red; }, 0.0, 1.0, "speed \xff m/s"}};
    const auto contrasting = [&](const Color& background, auto isInk)
    {
        return countPixels(
            paint(scene, {.width = 320, .height = 240, .background = background}, neverAbort),
            isInk);
    };
    const auto isBlack = [](const Pixel& p) {
        return std::max({p.red, p.green, p.blue}) < 90 && p.alpha > 128;
    };
    const auto isWhite = [](const Pixel& p) { return std::min({p.red, p.green, p.blue}) > 180; };
    EXPECT_GT(contrasting({1, 1, 1, 1}, isBlack), 200U);
    EXPECT_GT(contrasting({0, 0, 0.1F, 1}, isWhite), 200U);
    EXPECT_GT(contrasting({0, 0, 0, 0}, isBlack), 200U);
    EXPECT_GT(contrasting({0, 0, 0, 0}, [](const Pixel& p) { return p.alpha == 0; }), 40000U);
}

TEST_F(PaintingTest, OddScenesArePainted)
{
    EXPECT_EQ(countInk(paint({}, small(), neverAbort)), 0U);
    for (const PictureOptions& options :
         {PictureOptions{.width = 1, .height = 1}, PictureOptions{.width = 400, .height = 3},
          PictureOptions{.width = 240, .height = 180, .view = View{33.0, 90.0}}})
        for (const Box& box : {Box{{0, 0, 0}, {0, 0, 0}, 3}, Box{{0, 0, 0}, {1, 0, 0}, 1},
                               Box{{0, 0, 0}, {1e-3, 1e3, 1}, 3}, Box{{nan, 0, 0}, {1, 1, 1}, 3},
                               Box{{-1.7e308, 0, 0}, {1.7e308, 1, 1}, 3}})
            for (const double high : {1.0, 0.0, infinity, nan})
            {
                const Image image = paint({.drawables = {},
                                           .outline = box,
                                           .colorBar = ColorBar{[](double) { return blue; }, 0.0,
                                                                high, std::string(500, 'W')}},
                                          options, neverAbort);
                EXPECT_EQ(image.rgba.size(), options.width * options.height * 4);
            }
}

TEST_F(PaintingTest, LargePicturesHaveNoSeams)
{
    const Image image =
        paintArrows({{{0, 0, 0}, {1, 0, 0}, 0.002, red, true}}, {.width = 2200, .height = 20});
    for (std::size_t x = 20; x < 2100; ++x)
        ASSERT_TRUE(isRed(pixelAt(image, x, 10))) << x;
}

TEST_F(PaintingTest, TheSameInputGivesTheSamePicture)
{
    const Scene scene{
        .drawables = {arrows(randomArrows(50, 0.5F, true)), arrows(randomArrows(50, 1.0F, false))},
        .outline = Box{{0, 0, 0}, {1, 1, 1}, 3},
        .colorBar = std::nullopt};
    const PictureOptions options{.width = 320, .height = 240};
    EXPECT_EQ(paint(scene, options, neverAbort).rgba, paint(scene, options, neverAbort).rgba);
}

/// Long arrows from a small box, which cover one another many times.
std::vector<ArrowGlyph> crowd(std::size_t count, bool tube)
{
    auto glyphs = randomArrows(count, 1.0F, tube);
    for (ArrowGlyph& glyph : glyphs)
    {
        glyph.start *= 0.3;
        glyph.direction *= 2.0;
    }
    return glyphs;
}

TEST_P(ArrowPaintingTest, OnlyHiddenArrowsAreLeftOut)
{
    const auto glyphs = crowd(3000, GetParam());
    const PictureOptions options{.width = 200, .height = 150};
    const Image image = paintArrows(glyphs, options);
    // In batches of a few arrows, hidden ones are not looked for.
    Scene scene;
    for (std::size_t i = 0; i < glyphs.size(); i += 20)
        scene.drawables.push_back(
            arrows(std::vector(glyphs.begin() + static_cast<std::ptrdiff_t>(i),
                               glyphs.begin() + static_cast<std::ptrdiff_t>(i + 20))));
    // Dense arrows have fewer sides, which shows only along their edges.
    EXPECT_LE(numDifferent(image, paint(scene, options, neverAbort)), 200U * 150U / 25U);
}

TEST_F(PaintingTest, AnAbortEndsItSoon)
{
    using Clock = std::chrono::steady_clock;
    struct Watcher final : ProgressObserver
    {
        void opened(const ProgressReport& report) override
        {
            title = report.title;
            total = report.total;
        }
        void closed(const ProgressReport& report) override
        {
            isClosed = true;
            count = report.counter.count();
        }

        std::string title;
        unsigned long total = 0;
        unsigned long count = 0;
        bool isClosed = false;
    };
    // Transparent arrows do not hide one another, so that painting takes seconds.
    auto glyphs = crowd(60000, true);
    for (ArrowGlyph& glyph : glyphs)
        glyph.color.alpha = 0.5F;
    volatile bool abortFlag = false;
    Clock::time_point setAt;
    Watcher watcher;
    std::jthread interrupter(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            setAt = Clock::now();
            abortFlag = true;
        });
    EXPECT_EQ(errorOf([&] { paint({.drawables = {arrows(glyphs)}}, {}, abortFlag, &watcher); }),
              "aborted");
    const auto end = Clock::now();
    interrupter.join();
    EXPECT_LT(end - setAt, std::chrono::milliseconds(500));
    EXPECT_EQ(watcher.title, "painting");
    EXPECT_EQ(watcher.total, 60000U);
    EXPECT_LE(watcher.count, watcher.total);
    EXPECT_TRUE(watcher.isClosed);

    Watcher whole;
    paint({.drawables = {arrows(crowd(100, true))}}, small(), neverAbort, &whole);
    EXPECT_TRUE(whole.isClosed);
    EXPECT_EQ(whole.total, 100U);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(PaintingTest, ShortMemoryEndsItWithOneLine)
{
    const auto scene = Scene{.drawables = {arrows(crowd(2000, true))}};
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    const Image whole = paint(scene, small(), neverAbort);
    std::size_t numFailures = 0;
    for (rlim_t megabytes = 24; megabytes < 1500; megabytes += megabytes / 6)
    {
        rlimit limit = before;
        limit.rlim_cur = megabytes << 20U;
        setrlimit(RLIMIT_AS, &limit);
        Image image;
        const std::string error = errorOf([&] { image = paint(scene, small(), neverAbort); });
        setrlimit(RLIMIT_AS, &before);
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
        if (error == "no exception")
            EXPECT_EQ(image.rgba, whole.rgba) << megabytes;
        else
            ++numFailures;
    }
    EXPECT_GT(numFailures, 0U);
}
#endif

TEST_F(PaintingTest, FailuresSayWhatAndWhere)
{
    const auto failureOf = [](const Scene& scene, const volatile bool& abortFlag)
    { return errorOf<runtime_error>([&] { paint(scene, small(), abortFlag); }); };
    EXPECT_EQ(failureOf({.drawables = {arrows({})}}, alreadyAborted), "aborted");

    const auto withVertexShader = [](const std::string& file)
    {
        return GraphicsSystem::makePrimitive(
            PrimitiveConfig(RenderPrimitives::Lines)
                .vertexBuffer("in_vertex", GraphicsSystem::makeBuffer({{0, 0, 0}, {1, 1, 1}})),
            GraphicsSystem::makeProgram(file, lineFolder() + "fragment.glsl",
                                        lineFolder() + "geometry.glsl"));
    };
    EXPECT_EQ(failureOf({.drawables = {withVertexShader("missing.glsl")}}, neverAbort),
              "missing.glsl: the shader cannot be read");
    const TemporaryFolder folder;
    const std::string broken = folder / "broken.glsl";
    folder.write("broken.glsl", "void main()\n{\n    nonsense\n}\n");
    const std::string failure = failureOf({.drawables = {withVertexShader(broken)}}, neverAbort);
    EXPECT_TRUE(failure.starts_with(broken + ": ")) << failure;
    EXPECT_EQ(failure.find('\n'), std::string::npos) << failure;
}

}
