#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/colormap/BuiltInColorMaps.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/pipeline/Picture.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;
using pipeline::PictureWords;
using pipeline::sceneOf;

std::shared_ptr<const FunctionBase> named(const std::string& name)
{
    // Norms 1 and 3 at the first step, 2 and 8 at the second.
    return addData(lineOf(2), PointSetBase::Points,
                   std::vector<Vector2>{{1.0, 0.0}, {0.0, 3.0}, {2.0, 0.0}, {0.0, 8.0}},
                   Precision::Float64, {0.0, 1.0}, name);
}

std::shared_ptr<const ColorMapDataObject> gray(double low, double high)
{
    return std::make_shared<const ColorMapDataObject>(builtInColorMap("gray"),
                                                      ValueRange{low, high});
}

TEST(SceneOf, PointsTheEndsOfTheColorBarWhereValuesAreClamped)
{
    const auto barOf = [](double low, double high, std::optional<double> time) {
        return *sceneOf(nullptr, {named("U"), gray(low, high)}, time).colorBar;
    };
    const auto exact = barOf(1.0, 3.0, 0.0);
    EXPECT_FALSE(exact.isClampedBelow);
    EXPECT_FALSE(exact.isClampedAbove);
    EXPECT_EQ(exact.title, "|U|");
    EXPECT_TRUE(barOf(1.0, 3.0, 1.0).isClampedAbove);
    EXPECT_FALSE(barOf(1.0, 3.0, 1.0).isClampedBelow);
    EXPECT_TRUE(barOf(1.5, 8.0, 0.0).isClampedBelow);
    EXPECT_TRUE(barOf(1.0, 3.0, std::nullopt).isClampedAbove);
    EXPECT_FALSE(barOf(1.0, 2.9999999, 0.0).isClampedAbove);
    EXPECT_EQ(sceneOf(nullptr, {named(""), gray(0.0, 1.0)}, 0.0).colorBar->title, "norm");
    EXPECT_FALSE(sceneOf(nullptr, {named("U")}).colorBar.has_value());
    EXPECT_EQ(sceneOf(nullptr, {named("U")}).outline->dimension, 1U);
}

TEST(PictureWords, AreParsedOrRefused)
{
    PictureWords words;
    EXPECT_TRUE(words.isEmpty());
    words.title = "Flow";
    words.fontScale = "1.5";
    words.crop = true;
    EXPECT_FALSE(words.isEmpty());
    const auto options = words.options();
    EXPECT_EQ(options.title, "Flow");
    EXPECT_EQ(options.fontScale, 1.5);
    EXPECT_TRUE(options.crop);
    const auto errorFor = [](const std::string& scale)
    {
        PictureWords wrong;
        wrong.fontScale = scale;
        return errorOf<usage_error>([&] { static_cast<void>(wrong.options()); });
    };
    EXPECT_EQ(errorFor("0"), "texts cannot be scaled by 0; use 0.1 to 10");
    EXPECT_EQ(errorFor("nan"), "texts cannot be scaled by nan; use 0.1 to 10");
    EXPECT_TRUE(errorFor("large").starts_with("--font-scale: ")) << errorFor("large");
}

}
