#include "Painting.hpp"

#include "../../host/graphics/painter/GlyphOrder.hpp"
#include "../../host/graphics/painter/PictureLayout.hpp"
#include "../../host/graphics/painter/Rim.hpp"

#include <fmt/format.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace
{

using namespace tavrin;
using namespace tavrin::graphics;
using painter::Frame;
using painter::Label;
using painter::PictureLayout;
namespace fs = std::filesystem;

std::vector<ArrowGlyph> vortex(std::size_t count, bool tube)
{
    std::vector<ArrowGlyph> glyphs;
    for (std::size_t i = 0; i < count; ++i)
    {
        const double angle = 2.4 * static_cast<double>(i);
        const double radius =
            3.0 * std::sqrt((static_cast<double>(i) + 0.5) / static_cast<double>(count));
        const Vector3 direction(-std::sin(angle), std::cos(angle), tube ? 0.5 : 0.0);
        glyphs.push_back({{3.0 + radius * std::cos(angle), 3.0 + radius * std::sin(angle), 0.0},
                          0.3 * radius * direction,
                          0.05,
                          {0.2F, 0.3F, 0.8F, 1.0F},
                          tube});
    }
    return glyphs;
}

ColorBar grayBar(double low, double high)
{
    return {.color =
                [=](double value)
            {
                const auto gray = static_cast<float>((value - low) / (high - low));
                return Color{gray, gray, gray, 1.0F};
            },
            .low = low,
            .high = high,
            .title = "|speed|"};
}

Scene flatScene()
{
    Scene scene{.drawables = {arrows(vortex(12, false))},
                .outline = Box{{0, 0, 0}, {6, 6, 0}, 2},
                .colorBar = grayBar(0.0, 1.5),
                .timeLabel = "t = 0.5"};
    scene.colorBar->isClampedAbove = true;
    return scene;
}

Scene solidScene()
{
    return {.drawables = {arrows(vortex(12, true))},
            .outline = Box{{0, 0, 0}, {6000, 6000, 2000}, 3},
            .colorBar = grayBar(1e-7, 3e-7)};
}

struct Case
{
    std::string name;
    Scene scene;
    PictureOptions options;
};

std::vector<Case> cases()
{
    return {{"flat", flatScene(), {.width = 640, .height = 480, .title = "A vortex"}},
            {"flat-cropped", flatScene(), {.width = 640, .height = 480, .crop = true}},
            {"flat-large-font", flatScene(), {.width = 1280, .height = 960, .fontScale = 1.6}},
            {"solid", solidScene(), {.width = 640, .height = 480}},
            {"solid-wide", solidScene(), {.width = 1600, .height = 400, .view = View{20.0, 35.0}}}};
}

/// The places of everything in a picture, one per line.
std::string described(const Scene& scene, const PictureLayout& layout)
{
    std::ostringstream text;
    const auto point = [](const std::array<double, 2>& pixel)
    { return fmt::format(" {:.1f} {:.1f}", pixel[0], pixel[1]); };
    const auto addStroke = [&](const char* kind, const painter::Stroke& stroke)
    { text << kind << point(stroke.from) << point(stroke.to) << '\n'; };
    const auto addLabel = [&](const char* kind, const Label& label)
    {
        text << kind << point({label.x, label.y}) << ' ' << fmt::format("{:.1f}", label.fontSize)
             << ' ' << label.text << '\n';
    };
    text << "size " << layout.width() << ' ' << layout.height() << '\n';
    for (const auto& edge : layout.outline())
        addStroke("edge", edge);
    for (const auto& stroke : layout.axes().strokes)
        addStroke("axis", stroke);
    for (const auto& label : layout.axes().labels)
        addLabel("number", label);
    const Frame& bar = layout.colorBar()->bar();
    text << "bar" << point({bar.left, bar.top}) << point({bar.right(), bar.bottom()}) << '\n';
    for (const auto& stroke : layout.colorBar()->annotation().strokes)
        addStroke("tick", stroke);
    for (const auto& label : layout.colorBar()->annotation().labels)
        addLabel("value", label);
    for (const auto& label : layout.titles())
        addLabel("title", label);
    const painter::GlyphProjector projector(layout);
    for (const auto& place : painter::glyphsFarToNear(scene, layout))
    {
        const auto& batch = dynamic_cast<const ArrowBatch&>(*scene.drawables[place.drawable]);
        const auto corners = projector.flat(batch.arrows()[place.index]);
        text << "arrow " << place.index << point(corners[0]) << point(corners[3]) << '\n';
    }
    return text.str();
}

/// Whether two lines agree, where they have numbers within a pixel.
bool agree(const std::string& a, const std::string& b)
{
    std::istringstream wordsOfA(a);
    std::istringstream wordsOfB(b);
    std::string wordOfA;
    std::string wordOfB;
    while (wordsOfA >> wordOfA)
    {
        if (!(wordsOfB >> wordOfB))
            return false;
        char* endOfA = nullptr;
        char* endOfB = nullptr;
        const double numberA = std::strtod(wordOfA.c_str(), &endOfA);
        const double numberB = std::strtod(wordOfB.c_str(), &endOfB);
        const bool areNumbers = *endOfA == '\0' && *endOfB == '\0';
        if (areNumbers ? std::abs(numberA - numberB) > 1.0 : wordOfA != wordOfB)
            return false;
    }
    return !(wordsOfB >> wordOfB);
}

std::vector<std::string> linesOf(std::istream& stream)
{
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

TEST(PictureLayout, AgreesWithTheBaselines)
{
    for (const auto& [name, scene, options] : cases())
    {
        const std::string text = described(scene, PictureLayout(scene, options));
        std::istringstream stream(text);
        const auto lines = linesOf(stream);
        std::ifstream file(fs::path(TAVRIN_BASELINES) / (name + ".txt"));
        const auto expected = linesOf(file);
        bool isSame = lines.size() == expected.size();
        for (std::size_t i = 0; isSame && i < lines.size(); ++i)
        {
            isSame = agree(lines[i], expected[i]);
            if (!isSame)
                ADD_FAILURE() << name << ": \"" << lines[i] << "\" instead of \"" << expected[i]
                              << '"';
        }
        if (isSame)
            continue;
        const fs::path saved = fs::path(testing::TempDir()) / ("tavrin-" + name + ".txt");
        std::ofstream(saved) << text;
        ADD_FAILURE() << "the layout is in " << saved;
    }
}

std::vector<Label> labelsOf(const PictureLayout& layout)
{
    std::vector<Label> labels = layout.axes().labels;
    const auto& ofBar = layout.colorBar()->annotation().labels;
    labels.insert(labels.end(), ofBar.begin(), ofBar.end());
    labels.insert(labels.end(), layout.titles().begin(), layout.titles().end());
    return labels;
}

TEST(PictureLayout, KeepsLabelsApartAndMarginsEven)
{
    for (const auto& [name, scene, baseOptions] : cases())
        for (const double fontScale : {0.7, 1.0, 1.8})
        {
            PictureOptions options = baseOptions;
            options.fontScale = fontScale;
            const PictureLayout layout(scene, options);
            const auto labels = labelsOf(layout);
            Frame content = labels.front().frame();
            for (std::size_t i = 0; i < labels.size(); ++i)
            {
                const Frame a = labels[i].frame();
                content = content.unitedWith(a);
                for (std::size_t k = 0; k < i; ++k)
                {
                    const Frame b = labels[k].frame();
                    EXPECT_FALSE(a.left < b.right() && b.left < a.right() && a.top < b.bottom() &&
                                 b.top < a.bottom())
                        << name << ": " << labels[i].text << " and " << labels[k].text;
                }
            }
            for (const auto& extreme : layout.extent().extremes)
            {
                const auto pixel = layout.camera().project(extreme);
                content = content.unitedWith({pixel[0], pixel[1], 0.0, 0.0});
            }
            const double right = static_cast<double>(layout.width()) - content.right();
            const double bottom = static_cast<double>(layout.height()) - content.bottom();
            EXPECT_GT(content.left, 2.0) << name;
            EXPECT_GT(content.top, 2.0) << name;
            EXPECT_NEAR(content.left, right, 2.0) << name;
            // The pointed end of the bar may be higher than anything considered here.
            EXPECT_NEAR(content.top, bottom, 20.0) << name;
            const Frame& bar = layout.colorBar()->bar();
            EXPECT_LE(bar.height, static_cast<double>(layout.height())) << name;
        }
}

TEST(PictureLayout, ScalesWithThePicture)
{
    const Scene scene = solidScene();
    const PictureLayout small(scene, {.width = 1280, .height = 960});
    const PictureLayout large(scene, {.width = 3840, .height = 2880});
    ASSERT_EQ(small.axes().labels.size(), large.axes().labels.size());
    for (std::size_t i = 0; i < small.axes().labels.size(); ++i)
    {
        const Label& a = small.axes().labels[i];
        const Label& b = large.axes().labels[i];
        EXPECT_EQ(a.text, b.text);
        EXPECT_NEAR(3.0 * a.x, b.x, 6.0);
        EXPECT_NEAR(3.0 * a.y, b.y, 6.0);
        EXPECT_DOUBLE_EQ(3.0 * a.fontSize, b.fontSize);
    }
    EXPECT_DOUBLE_EQ(large.style().unit, 3.0);
}

TEST(PictureLayout, LeavesOutTheEdgesInFrontOfABox)
{
    const Scene scene = solidScene();
    EXPECT_EQ(PictureLayout(scene, {}).outline().size(), 9U);
    EXPECT_EQ(PictureLayout(scene, {.view = View::fromText("x")}).outline().size(), 12U);
    EXPECT_EQ(PictureLayout(flatScene(), {}).outline().size(), 4U);
}

TEST(Rim, SurroundsWhatIsHardToSee)
{
    const painter::Style onWhite(1280, 960, {1, 1, 1, 1}, 1.0);
    const painter::Style onBlack(1280, 960, {0, 0, 0, 1}, 1.0);
    const painter::Style onNothing(1280, 960, {0, 0, 0, 0}, 1.0);
    const Color white{1, 1, 1, 1};
    const Color yellow{0.75F, 0.75F, 0.0F, 1.0F};
    const Color navy{0.0F, 0.0F, 0.4F, 1.0F};
    const auto widthOf = [](const Color& color, const painter::Style& style)
    { return painter::rimFor(color, 10.0, style).outerWidth; };
    EXPECT_DOUBLE_EQ(widthOf(white, onWhite), 1.0);
    EXPECT_GT(widthOf(yellow, onWhite), 0.5);
    EXPECT_EQ(widthOf(navy, onWhite), 0.0);
    EXPECT_EQ(widthOf(yellow, onBlack), 0.0);
    EXPECT_DOUBLE_EQ(widthOf(navy, onBlack), 1.0);
    EXPECT_DOUBLE_EQ(widthOf(white, onNothing), 1.0);
    EXPECT_LT(painter::rimFor(white, 1.0, onWhite).outerWidth, 0.5);
    EXPECT_NEAR(painter::contrastOf(white, {0, 0, 0, 1}), 21.0, 1e-6);
    // A rim in the color of the background would be seen on any other.
    EXPECT_EQ(painter::rimFor(navy, 10.0, onNothing).innerWidth, 0.0);
}

}
