#include <support/TemporaryFolder.hpp>
#include <support/errorOf.hpp>

#include <tavrin/colormap/ColorMapReference.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using namespace support;
using namespace tavrin;

class ColorMapFileTest : public testing::Test
{
protected:
    void write(const std::string& text) const { folder.write(file.filename(), text); }

    /// The error about a file with this text, without the name of the file.
    std::string faultOf(const std::string& text) const
    {
        write(text);
        return errorOf<ColorMapFileError>([&] { readColorMapFile(file); })
            .substr(file.string().size());
    }

    static std::string usageErrorOf(const std::string& reference)
    {
        return errorOf<usage_error>([&] { ColorMapReference::parse(reference).load(); });
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "map@2.json";
};

const std::string twoMaps = R"([
 {"ColorSpace": "Diverging", "Name": "First", "NanColor": [1, 1, 0], "Creator": "a tool",
  "RGBPoints": [10, 0, 0, 1, 20, 1, 0, 0.0000001], "Points": [0, 1, 0.5, 0, 1, 1, 0.5, 0]},
 {"Name": "Second", "UseBelowRangeColor": 1, "BelowRangeColor": [0, 0, 0],
  "UseAboveRangeColor": 0, "AboveRangeColor": [1, 1, 1], "RGBPoints": [0, 0, 1, 0, 1, 1, 1.0001, 0]}
])";

TEST_F(ColorMapFileTest, ReadsWhatToolsExport)
{
    write(twoMaps);
    const auto maps = readColorMapFile(file);
    ASSERT_EQ(maps.size(), 2U);
    EXPECT_EQ(maps[0].name(), "First");
    EXPECT_EQ(maps[0].range(), (ValueRange{10.0, 20.0}));
    EXPECT_EQ(maps[0].definition().space, ColorSpace::Diverging);
    EXPECT_EQ(maps[0].mapValueToColor(std::nan("")), (Color{1.0F, 1.0F, 0.0F, 1.0F}));
    EXPECT_EQ(maps[0].mapValueToColor(20.0), (Color{1.0F, 0.0F, 1e-7F, 1.0F}));
    EXPECT_EQ(maps[1].mapValueToColor(-1.0), (Color{0.0F, 0.0F, 0.0F, 1.0F}));
    EXPECT_EQ(maps[1].mapValueToColor(2.0), (Color{1.0F, 1.0F, 0.0F, 1.0F}));

    write(R"({"RGBPoints": [0, 0, 1, 0, 1, 1, 1, 0]})");
    EXPECT_EQ(readColorMapFile(file).front().name(), "map@2");
}

TEST_F(ColorMapFileTest, SaysWhatIsWrongAndWhere)
{
    EXPECT_EQ(faultOf(""), ": is empty");
    EXPECT_EQ(faultOf("{\"Name\":\n  nonsense}"), ": is not valid JSON at line 2, column 4");
    EXPECT_EQ(faultOf("[]"), ": has no color map");
    EXPECT_EQ(faultOf("[{\"RGBPoints\": [0,0,0,0,1,1,1,1]}, 5]"),
              ": color map 1: is not an object");
    EXPECT_EQ(faultOf("{}"), ": \"RGBPoints\" is missing");
    EXPECT_EQ(faultOf(R"({"RGBPoints": [0,0,0,0,1,1]})"),
              ": \"RGBPoints\" has 6 numbers, which are not groups of x, r, g, b");
    EXPECT_EQ(faultOf(R"({"RGBPoints": [0,0,0,0,1,"1",1,1]})"),
              ": \"RGBPoints\"[5] is not a number");
    EXPECT_EQ(faultOf(R"({"RGBPoints": [0,0,0,0,1,1,255,1]})"),
              ": the color of control point 1 has a component outside 0..1");
    EXPECT_EQ(faultOf(R"({"RGBPoints": [0,0,0,0,1e999,1,1,1]})"),
              ": is not valid JSON: it has a number that is too large");
    EXPECT_EQ(faultOf(R"({"ColorSpace": "lap", "RGBPoints": [0,0,0,0,1,1,1,1]})"),
              ": unknown \"ColorSpace\" \"lap\"; did you mean \"Lab\"?");
    EXPECT_EQ(faultOf(R"({"NanColor": [1, 1], "RGBPoints": [0,0,0,0,1,1,1,1]})"),
              ": \"NanColor\" has 2 numbers instead of 3");
    EXPECT_EQ(faultOf(R"({"Name": 1, "RGBPoints": [0,0,0,0,1,1,1,1]})"),
              ": \"Name\" is not a text");
    EXPECT_EQ(faultOf(R"({"IndexedColors": [0,0,0]})"),
              ": has \"IndexedColors\" but no \"RGBPoints\"; color maps for categories are not "
              "offered");
    EXPECT_EQ(faultOf(R"({"UseLogScale": 1, "RGBPoints": [1,0,0,0,9,1,1,1]})"),
              ": \"UseLogScale\" is set; logarithmic color maps are not offered");
    const auto missing = folder / "missing.json";
    EXPECT_EQ(errorOf<ColorMapFileError>([&] { readColorMapFile(missing); }),
              missing.string() + ": no such file");
}

TEST_F(ColorMapFileTest, AReferenceNamesAMapAndARange)
{
    const auto builtIn = ColorMapReference::parse("viridis@-1e-3:+2");
    EXPECT_EQ(builtIn.name, "viridis");
    EXPECT_EQ(builtIn.range, (ValueRange{-1e-3, 2.0}));
    EXPECT_EQ(ColorMapReference::parse("gray").range, std::nullopt);

    write(twoMaps);
    const auto named = ColorMapReference::parse(file.string() + "#Second@0:5");
    EXPECT_EQ(named.file, file);
    EXPECT_EQ(named.load().name(), "Second");
    EXPECT_EQ(ColorMapReference::parse(file.string()).file, file);
    EXPECT_EQ(usageErrorOf(file.string()),
              file.string() + ": 2 color maps; name one as FILE#NAME; there are \"First\", "
                              "\"Second\"");
    EXPECT_EQ(usageErrorOf(file.string() + "#Secund"),
              file.string() + ": no color map \"Secund\"; did you mean \"Second\"?");
}

TEST_F(ColorMapFileTest, AMapForValuesSpansThem)
{
    const auto map = ColorMapReference::parse("gray").loadFor({0.0, 8.0});
    EXPECT_EQ(map->mapValueToColorScaled(4.0).red, 0.5F);
    EXPECT_EQ(map->colorMap().mapValueToColor(4.0).red, 0.5F);
    // Constant, zero and infinite norms.
    const auto reference = ColorMapReference::parse("gray");
    EXPECT_EQ(reference.loadFor({3.0, 3.0})->mapValueToColorScaled(3.0).red, 0.5F);
    EXPECT_EQ(reference.loadFor({0.0, 0.0})->scaling(), ValueRange{});
    EXPECT_EQ(reference.loadFor({1.0, std::numeric_limits<double>::infinity()})->scaling(),
              ValueRange{});
}

TEST_F(ColorMapFileTest, RefusesReferencesInOneLine)
{
    EXPECT_EQ(usageErrorOf("virids@0:1"),
              "unknown color map \"virids\"; did you mean \"viridis\"?");
    EXPECT_EQ(usageErrorOf("maps/viridis"),
              "color map \"maps/viridis\": a file of color maps ends in .json");
    EXPECT_EQ(usageErrorOf("gray@5"), "the range of values \"@5\" is not of the form @LOW:HIGH");
    EXPECT_EQ(usageErrorOf("gray@0:x"), "the range of values \"@0:x\" is not of the form "
                                        "@LOW:HIGH: \"x\" is not a number");
    EXPECT_EQ(usageErrorOf("gray@1:1"), "the range of values \"@1:1\" does not ascend; LOW must be "
                                        "less than HIGH");
    EXPECT_EQ(usageErrorOf("gray@0:inf"), "the range of values \"@0:inf\" is not finite");
    EXPECT_EQ(usageErrorOf("gray@nan:1"), "the range of values \"@nan:1\" is not finite");
    EXPECT_EQ(usageErrorOf("gray@-1e308:1e308"),
              "the range of values \"@-1e308:1e308\" is not finite");
    EXPECT_EQ(usageErrorOf("a.jsonx"),
              "color map \"a.jsonx\" is not of the form FILE.json[#NAME][@LOW:HIGH]");
}

}
