#include <support/errorOf.hpp>

#include <support/smallData.hpp>

#include <tavrin/colormap/BuiltInColorMaps.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/colormap/NormRange.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using namespace support;
using namespace tavrin;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

constexpr Color red{1.0F, 0.0F, 0.0F, 1.0F};
constexpr Color green{0.0F, 1.0F, 0.0F, 1.0F};
constexpr Color blue{0.0F, 0.0F, 1.0F, 1.0F};
constexpr Color black{0.0F, 0.0F, 0.0F, 1.0F};

ColorMap mapOf(ColorSpace space, std::vector<ColorMap::ControlPoint> points)
{
    return ColorMap(
        {.name = {}, .space = space, .points = std::move(points), .below = {}, .above = {}});
}

void expectNear(const Color& actual, const Color& expected, float tolerance = 1.0F / 255.0F)
{
    EXPECT_NEAR(actual.red, expected.red, tolerance);
    EXPECT_NEAR(actual.green, expected.green, tolerance);
    EXPECT_NEAR(actual.blue, expected.blue, tolerance);
    EXPECT_EQ(actual.alpha, expected.alpha);
}

TEST(ColorMap, IsLinearBetweenControlPointsAndTheirColorAtThem)
{
    const auto map = mapOf(ColorSpace::Rgb, {{-2.0, red}, {0.0, green}, {6.0, blue}});
    EXPECT_EQ(map.range(), (ValueRange{-2.0, 6.0}));
    EXPECT_EQ(map.mapValueToColor(-2.0), red);
    EXPECT_EQ(map.mapValueToColor(-1.5), (Color{0.75F, 0.25F, 0.0F, 1.0F}));
    EXPECT_EQ(map.mapValueToColor(0.0), green);
    EXPECT_EQ(map.mapValueToColor(1.5), (Color{0.0F, 0.75F, 0.25F, 1.0F}));
    EXPECT_EQ(map.mapValueToColor(6.0), blue);

    const auto fading = mapOf(ColorSpace::Lab, {{0.0, red}, {1.0, {1.0F, 0.0F, 0.0F, 0.0F}}});
    EXPECT_FLOAT_EQ(fading.mapValueToColor(0.25).alpha, 0.75F);
}

TEST(ColorMap, HasColorsForValuesOutsideAndForNone)
{
    const auto plain = mapOf(ColorSpace::Rgb, {{0.0, red}, {1.0, green}});
    EXPECT_EQ(plain.mapValueToColor(-0.001), red);
    EXPECT_EQ(plain.mapValueToColor(-infinity), red);
    EXPECT_EQ(plain.mapValueToColor(infinity), green);
    EXPECT_EQ(plain.mapValueToColor(nan), (Color{0.5F, 0.5F, 0.5F, 1.0F}));

    const ColorMap map({.name = {},
                        .space = ColorSpace::Rgb,
                        .points = {{0.0, red}, {1.0, green}},
                        .notANumber = {0.0F, 0.0F, 0.0F, 0.0F},
                        .below = black,
                        .above = blue});
    const ColorMapDataObject object(map, {10.0, 10.3});
    EXPECT_EQ(map.mapValueToColor(-infinity), black);
    EXPECT_EQ(map.mapValueToColor(0.0), red);
    EXPECT_EQ(map.mapValueToColor(1.0), green);
    EXPECT_EQ(map.mapValueToColor(1.0000001), blue);
    EXPECT_EQ(map.mapValueToColor(nan).alpha, 0.0F);
    EXPECT_EQ(object.mapValueToColorScaled(10.0), red);
    EXPECT_EQ(object.mapValueToColorScaled(10.3), green);
    EXPECT_EQ(object.mapValueToColorScaled(infinity), blue);
    EXPECT_EQ(object.mapValueToColorScaled(-infinity), black);
    EXPECT_EQ(object.mapValueToColorScaled(nan).alpha, 0.0F);
}

TEST(ColorMap, TwoPointsAtOnePositionAreAJump)
{
    const auto map =
        mapOf(ColorSpace::Lab, {{0.0, black}, {1.0, black}, {1.0, green}, {2.0, green}});
    EXPECT_EQ(map.mapValueToColor(1.0), black);
    expectNear(map.mapValueToColor(std::nextafter(1.0, 2.0)), green);
}

// The expected colors are those of vtkColorTransferFunction 9.1.
TEST(ColorMap, FollowsItsColorSpace)
{
    const auto lab = mapOf(ColorSpace::Lab, {{0.0, red}, {1.0, blue}});
    expectNear(lab.mapValueToColor(0.25), {0.909656F, 0.0F, 0.311768F, 1.0F});
    expectNear(lab.mapValueToColor(0.75), {0.605206F, 0.0F, 0.762937F, 1.0F});

    const auto hsv = mapOf(ColorSpace::Hsv, {{0.0, blue}, {1.0, red}});
    expectNear(hsv.mapValueToColor(0.25), {0.0F, 1.0F, 1.0F, 1.0F});
    expectNear(hsv.mapValueToColor(0.5), green);
    const auto fromGray = mapOf(ColorSpace::Hsv, {{0.0, {0.5F, 0.5F, 0.5F, 1.0F}}, {1.0, green}});
    expectNear(fromGray.mapValueToColor(0.25), {0.625F, 0.546875F, 0.46875F, 1.0F});

    const auto fromBlack = mapOf(ColorSpace::Diverging, {{0.0, black}, {1.0, green}});
    expectNear(fromBlack.mapValueToColor(0.25), {0.308080F, 0.343385F, 0.294849F, 1.0F});
    expectNear(fromBlack.mapValueToColor(0.75), {0.531195F, 0.921609F, 0.440686F, 1.0F});

    const auto steps = mapOf(ColorSpace::Step, {{0.0, red}, {1.0, green}, {2.0, blue}});
    EXPECT_EQ(steps.mapValueToColor(0.0), red);
    EXPECT_EQ(steps.mapValueToColor(0.25), green);
    EXPECT_EQ(steps.mapValueToColor(1.0), green);
    EXPECT_EQ(steps.mapValueToColor(1.5), blue);
}

TEST(ColorMap, BuiltInMapsHaveTheirPublishedColors)
{
    const auto color = [](const char* name, double value)
    { return builtInColorMap(name).mapValueToColor(value); };
    // Rows of the published tables; the first one of each is not a control point of ours.
    expectNear(color("viridis", 100.0 / 255.0), {0.166617F, 0.463708F, 0.558119F, 1.0F});
    expectNear(color("viridis", 1.0), {0.993248F, 0.906157F, 0.143936F, 1.0F});
    expectNear(color("plasma", 100.0 / 255.0), {0.683758F, 0.156278F, 0.571660F, 1.0F});
    expectNear(color("gray", 0.25), {0.25F, 0.25F, 0.25F, 1.0F});
    // vtkColorTransferFunction 9.1 with the same end colors.
    expectNear(color("coolwarm", 0.25), {0.553318F, 0.688635F, 0.995188F, 1.0F});
    expectNear(color("coolwarm", 0.5), {0.865395F, 0.865410F, 0.865396F, 1.0F});
    expectNear(color("coolwarm", 0.75), {0.958418F, 0.603116F, 0.481685F, 1.0F});
    for (const std::string& name : builtInColorMapNames())
    {
        const ColorMap map = builtInColorMap(name);
        EXPECT_EQ(map.range(), ValueRange{}) << name;
        EXPECT_NE(map.mapValueToColor(0.0), map.mapValueToColor(1.0)) << name;
    }
}

TEST(ColorMap, ScalingSpreadsTheMapAndLeavesTheDirectLookupAlone)
{
    const auto map = mapOf(ColorSpace::Rgb, {{2.0, red}, {4.0, green}});
    EXPECT_EQ(ColorMapDataObject(map).mapValueToColorScaled(3.0), map.mapValueToColor(3.0));
    const ColorMapDataObject object(map, {-10.0, 10.0});
    EXPECT_EQ(object.mapValueToColorScaled(-5.0), (Color{0.75F, 0.25F, 0.0F, 1.0F}));
    EXPECT_EQ(object.colorMap().mapValueToColor(3.0), (Color{0.5F, 0.5F, 0.0F, 1.0F}));
    EXPECT_TRUE(object.isA(DataObject::classTypeId()));
    EXPECT_EQ(ColorMapDataObject::classTypeId().name(), "ColorMapDataObject");

    const ColorMap stretched = map.stretchedTo({-10.0, 10.0});
    EXPECT_EQ(stretched.mapValueToColor(-5.0), object.mapValueToColorScaled(-5.0));
    EXPECT_EQ(stretched.range(), (ValueRange{-10.0, 10.0}));
}

TEST(ColorMap, RefusesWhatIsNone)
{
    const auto faultOfPoints = [&](std::vector<ColorMap::ControlPoint> points)
    { return errorOf<tavrin::runtime_error>([&] { mapOf(ColorSpace::Rgb, points); }); };
    EXPECT_EQ(faultOfPoints({{0.0, red}}), "a color map needs at least two control points, not 1");
    EXPECT_EQ(faultOfPoints({{0.0, red}, {1.0, red}, {0.5, red}}),
              "control point 2 at 0.5 follows one at 1; the positions must ascend");
    EXPECT_EQ(faultOfPoints({{0.0, red}, {nan, red}}), "control point 1 is at nan");
    EXPECT_EQ(faultOfPoints({{1.0, red}, {1.0, green}}),
              "the control points from 1 to 1 span no range");
    EXPECT_EQ(faultOfPoints({{0.0, red}, {1.0, {0.0F, 1.5F, 0.0F, 1.0F}}}),
              "the color of control point 1 has a component outside 0..1");
    const auto map = mapOf(ColorSpace::Rgb, {{0.0, red}, {1.0, red}});
    EXPECT_EQ(errorOf<tavrin::runtime_error>(
                  [&] {
                      ColorMapDataObject(map, {1.0, 1.0});
                  }),
              "a color map cannot span 1 to 1");
    EXPECT_EQ(errorOf<tavrin::runtime_error>(
                  [&] {
                      map.stretchedTo({0.0, infinity});
                  }),
              "a color map cannot span 0 to inf");
}

TEST(NormRange, IsThatOfFiniteValidNorms)
{
    const auto rangeOf =
        [](std::vector<Vector2> values, std::shared_ptr<const ValidityMask> mask = nullptr)
    {
        const auto line = support::lineOf(values.size());
        return finiteNormRange(*addData(line, PointSetBase::Points, std::move(values),
                                        Precision::Float64, {}, "v", std::move(mask)));
    };
    EXPECT_EQ(rangeOf({{3.0, 4.0}, {0.0, -1.0}}), (ValueRange{1.0, 5.0}));
    EXPECT_EQ(rangeOf({{infinity, 0.0}, {3.0, 4.0}, {nan, 0.0}, {0.0, -infinity}}),
              (ValueRange{5.0, 5.0}));
    EXPECT_EQ(rangeOf({{nan, 0.0}, {0.0, infinity}}), std::nullopt);
    EXPECT_EQ(rangeOf({}), std::nullopt);
    EXPECT_EQ(rangeOf({{0.0, 0.0}, {3.0, 4.0}, {0.0, 2.0}},
                      std::make_shared<const ValidityMask>(ValidityMask{0, 1, 1})),
              (ValueRange{2.0, 5.0}));
    // More than one block.
    std::vector<Vector2> many(5000, Vector2(1.0, 0.0));
    many[4999] = Vector2(0.0, 7.0);
    EXPECT_EQ(rangeOf(many), (ValueRange{1.0, 7.0}));
}

}
