#include "AlgorithmTest.hpp"

#include <support/captured.hpp>

#include <tavrin/colormap/BuiltInColorMaps.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <limits>

namespace
{

using namespace support;
using namespace tavrin;
using graphics::ArrowBatch;
using graphics::ArrowGlyph;
using graphics::Primitive;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A gray map over 0 to 10, scaled to 0 to 100, with an opaque and a half transparent end.
std::shared_ptr<const ColorMapDataObject> grayMap(float alphaOfWhite = 1.0F)
{
    ColorMap map(
        {.name = {},
         .space = ColorSpace::Rgb,
         .points = {{0.0, {0.0F, 0.0F, 0.0F, 1.0F}}, {10.0, {1.0F, 1.0F, 1.0F, alphaOfWhite}}},
         .below = {},
         .above = {}});
    return std::make_shared<const ColorMapDataObject>(std::move(map), ValueRange{0.0, 100.0});
}

class ShowHedgehogsTest : public testing::Test
{
protected:
    /// Executes and returns what was written to standard output.
    std::string execute()
    {
        return standardOutputOf([&] { run.execute(neverAbort); });
    }

    std::vector<ArrowGlyph> arrows()
    {
        const auto batch = std::dynamic_pointer_cast<ArrowBatch>(run.graphics("Hedgehogs"));
        if (batch == nullptr)
        {
            ADD_FAILURE() << "no arrows";
            return {};
        }
        return batch->arrows();
    }

    std::vector<ArrowGlyph> arrowsOf(std::shared_ptr<const FunctionBase> field)
    {
        run.connect("Field", std::move(field));
        execute();
        return arrows();
    }

    std::shared_ptr<const Primitive> lines()
    {
        run.setDirectly("Representation", "line");
        execute();
        return std::dynamic_pointer_cast<const Primitive>(run.graphics("Hedgehogs"));
    }

    bool isColorVisible() const { return run.input("Color").isVisible(); }

    AlgorithmRun run{makeRun("Field/Show Hedgehogs")};
};

TEST_F(ShowHedgehogsTest, AColorMapHidesTheColor)
{
    EXPECT_TRUE(isColorVisible());
    run.setText("Scale", "2");
    EXPECT_TRUE(isColorVisible());
    run.connect("Color Map", grayMap());
    EXPECT_FALSE(isColorVisible());
    run.connect("Color Map", nullptr);
    EXPECT_TRUE(isColorVisible());
}

TEST_F(ShowHedgehogsTest, TheAnchorDecidesWhichPointLiesOnTheSample)
{
    const auto field = fieldOf<Vector3>({{2.0, 0.0, 0.0}}, cloudOf<3>({Vector3(1.0, 1.0, 1.0)}));
    for (const auto& [anchor, start] :
         {std::pair("origin", Vector3(1.0, 1.0, 1.0)), std::pair("center", Vector3(0.0, 1.0, 1.0)),
          std::pair("destination", Vector3(-1.0, 1.0, 1.0))})
    {
        run.setText("Vector anchor point at", anchor);
        run.setText("Representation", "arrow");
        const auto glyphs = arrowsOf(field);
        ASSERT_EQ(glyphs.size(), 1U);
        EXPECT_EQ(glyphs[0].start, start) << anchor;
        EXPECT_EQ(glyphs[0].direction, Vector3(2.0, 0.0, 0.0)) << anchor;

        const auto primitive = lines();
        ASSERT_NE(primitive, nullptr);
        const auto vertices = primitive->findBuffer("in_vertex")->values();
        ASSERT_EQ(vertices.size(), 6U);
        EXPECT_EQ(vertices[0], static_cast<float>(start[0])) << anchor;
        EXPECT_EQ(vertices[3], static_cast<float>(start[0] + 2.0)) << anchor;
    }
}

TEST_F(ShowHedgehogsTest, ArrowsHaveAScaledVectorAndAWidthProportionalToIt)
{
    run.setText("Scale", "-2");
    run.setText("Width Scale", "3");
    run.setText("Color", "#ff000080");
    for (const auto& [representation, isTube] :
         {std::pair("arrow", false), std::pair("tube arrow", true)})
    {
        run.setText("Representation", representation);
        run.connect("Field", fieldOf<Vector3>({{3.0, 0.0, 4.0}, {0.0, 0.0, 0.0}, {nan, 0.0, 0.0}}));
        EXPECT_EQ(execute(), "Number of Arrows: 3\n");
        const auto glyphs = arrows();
        ASSERT_EQ(glyphs.size(), 3U);
        EXPECT_EQ(glyphs[0].direction, Vector3(-6.0, 0.0, -8.0));
        EXPECT_DOUBLE_EQ(glyphs[0].width, 1.5);
        EXPECT_EQ(glyphs[0].tube, isTube);
        EXPECT_EQ(glyphs[0].color, (Color{1.0F, 0.0F, 0.0F, 128.0F / 255.0F}));
        EXPECT_EQ(glyphs[1].start, Vector3(1.0, 0.0, 0.0));
        EXPECT_EQ(glyphs[1].width, 0.0);
        EXPECT_TRUE(std::isnan(glyphs[2].direction[0]));
    }
    run.setText("Width Scale", "0");
    EXPECT_EQ(arrowsOf(fieldOf<Vector3>({{1.0, 0.0, 0.0}}))[0].width, 0.0);
}

TEST_F(ShowHedgehogsTest, LowerDimensionsArePaddedWithZeros)
{
    const auto onLine = arrowsOf(fieldOf<Vector2>({{1.0, 2.0}, {3.0, 4.0}}));
    EXPECT_EQ(onLine[1].start, Vector3(1.0, 0.0, 0.0));
    EXPECT_EQ(onLine[1].direction, Vector3(3.0, 4.0, 0.0));
    EXPECT_EQ(arrowsOf(fieldOf<Vector3>({{1.0, 2.0, 3.0}}))[0].direction, Vector3(1.0, 2.0, 3.0));

    const auto plane = cloudOf<2>({Vector2(5.0, 6.0)});
    EXPECT_EQ(arrowsOf(fieldOf<Vector2>({{1.0, 2.0}}, plane))[0].start, Vector3(5.0, 6.0, 0.0));
    EXPECT_EQ(arrowsOf(fieldOf<Vector3>({{1.0, 2.0, 3.0}}, plane))[0].direction[2], 3.0);

    const auto space = cloudOf<3>({Vector3(5.0, 6.0, 7.0)});
    const auto inSpace = arrowsOf(fieldOf<Vector2>({{1.0, 2.0}}, space));
    EXPECT_EQ(inSpace[0].start, Vector3(5.0, 6.0, 7.0));
    EXPECT_EQ(inSpace[0].direction, Vector3(1.0, 2.0, 0.0));
}

TEST_F(ShowHedgehogsTest, CellDataSitsInTheMeansOfTheVertices)
{
    const auto line = lineOf(3);
    const auto onLine = arrowsOf(addData(
        line, detail::Cells, std::vector<Vector2>{{1.0, 0.0}, {0.0, 1.0}}, Precision::Float64, {}));
    EXPECT_EQ(onLine[1].start, Vector3(1.5, 0.0, 0.0));

    const auto plane = std::make_shared<RectilinearGrid<2>>(
        RectilinearGrid<2>::Coordinates{std::vector{0.0, 2.0}, std::vector{0.0, 1.0, 5.0}});
    const auto onPlane = arrowsOf(addData(plane, detail::Cells,
                                          std::vector<Vector3>{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}},
                                          Precision::Float64, {}));
    EXPECT_EQ(onPlane[1].start, Vector3(1.0, 3.0, 0.0));

    const auto points =
        stored(std::vector<Vector3>{{0.0, 0.0, 0.0}, {3.0, 0.0, 0.0}, {0.0, 6.0, 9.0}});
    CellTable cells{.types = {CellType::Triangles, CellType::Invalid},
                    .offsets = IndexArray(std::vector<std::int64_t>{0, 3, 3}),
                    .connectivity = IndexArray(std::vector<std::int64_t>{0, 1, 2})};
    const auto surface = std::make_shared<UnstructuredGrid<3>>(points, std::move(cells));
    const auto onSurface = arrowsOf(addData(surface, detail::Cells,
                                            std::vector<Vector3>{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}},
                                            Precision::Float64, {}));
    EXPECT_EQ(onSurface[0].start, Vector3(1.0, 2.0, 3.0));
    for (const double coordinate : onSurface[1].start)
        EXPECT_TRUE(std::isnan(coordinate));
}

TEST_F(ShowHedgehogsTest, ColorsOfPointsAreScaledAndThoseOfCellsAreNot)
{
    // "Scale" must not change the colors.
    run.setText("Scale", "7");
    run.connect("Color Map", grayMap());
    const std::vector<Vector2> values{{3.0, 4.0}, {30.0, 40.0}};
    const auto points = arrowsOf(fieldOf(values));
    EXPECT_FLOAT_EQ(points[0].color.red, 0.05F);
    EXPECT_FLOAT_EQ(points[1].color.red, 0.5F);
    const auto cells = arrowsOf(addData(lineOf(3), detail::Cells, values, Precision::Float64, {}));
    EXPECT_FLOAT_EQ(cells[0].color.red, 0.5F);
    EXPECT_FLOAT_EQ(cells[1].color.red, 1.0F);
}

TEST_F(ShowHedgehogsTest, LinesAreTwoVerticesEachInSinglePrecision)
{
    run.setText("Width Scale", "2.5");
    run.connect("Field", fieldOf<Vector3>(
                             {{0.1, 0.0, 0.0}, {0.0, 2.0, 0.0}, {0.0, 0.0, 0.3}},
                             cloudOf<3>({Vector3(1e7 / 3.0, 0.0, 0.0), Vector3(1e7 / 3.0, 1.0, 0.0),
                                         Vector3(1e7 / 3.0, 2.0, 0.0)})));
    const auto primitive = lines();
    ASSERT_NE(primitive, nullptr);
    const auto& config = primitive->config();
    EXPECT_EQ(config.primitives(), graphics::RenderPrimitives::Lines);
    EXPECT_EQ(config.renderBin(), graphics::RenderBin::Opaque);
    EXPECT_EQ(config.uniforms(), (graphics::PrimitiveConfig::Uniforms{{"u_lineWidth", 2.5F}}));
    ASSERT_EQ(config.vertexBuffers().size(), 2U);
    EXPECT_EQ(config.vertexBuffers()[0].first, "in_vertex");
    EXPECT_EQ(config.vertexBuffers()[1].first, "in_color");

    const auto vertices = primitive->findBuffer("in_vertex")->values();
    const float x = static_cast<float>(1e7 / 3.0);
    const std::vector<float> expected{x, 0.0F, 0.0F, x + 0.1F, 0.0F, 0.0F, x, 1.0F, 0.0F,
                                      x, 3.0F, 0.0F, x,        2.0F, 0.0F, x, 2.0F, 0.3F};
    EXPECT_EQ(std::vector<float>(vertices.begin(), vertices.end()), expected);
    const auto colors = primitive->findBuffer("in_color")->values();
    ASSERT_EQ(colors.size(), 24U);
    EXPECT_EQ(std::vector<float>(colors.end() - 4, colors.end()),
              (std::vector<float>{0.75F, 0.75F, 0.0F, 1.0F}));
    EXPECT_EQ(config.boundingSphere().center, Vector3(x, 1.5, 0.0));
    EXPECT_NEAR(config.boundingSphere().radius, 1.5, 1e-5);

    const std::string folder = "utils/Graphics/shader/line/noShading/multiColor/";
    EXPECT_TRUE(primitive->program().vertex.string().ends_with(folder + "vertex.glsl"));
    EXPECT_TRUE(primitive->program().fragment.string().ends_with(folder + "fragment.glsl"));
    EXPECT_TRUE(std::filesystem::exists(primitive->program().geometry));

    run.setText("Width Scale", "0");
    EXPECT_EQ(lines()->config().uniforms().front().second, 0.0F);
}

TEST_F(ShowHedgehogsTest, OneTransparentColorMakesAllLinesTransparent)
{
    std::vector<Vector2> values(5000, Vector2(0.0, 0.0));
    run.connect("Color Map", grayMap(0.5F));
    run.connect("Field", fieldOf(values));
    EXPECT_EQ(lines()->config().renderBin(), graphics::RenderBin::Opaque);
    values[4321] = Vector2(100.0, 0.0);
    run.connect("Field", fieldOf(values));
    const auto primitive = lines();
    EXPECT_EQ(primitive->config().renderBin(), graphics::RenderBin::Transparent);
    const auto colors = primitive->findBuffer("in_color")->values();
    EXPECT_EQ(colors[8 * 4321 + 3], 0.5F);
    EXPECT_EQ(colors[8 * 4321 + 7], 0.5F);
    EXPECT_EQ(colors[8 * 4322 + 3], 1.0F);
}

TEST_F(ShowHedgehogsTest, TimeMovesTheFieldOnlyWithinItsSteps)
{
    const auto field =
        fieldOf<Vector2>({{1.0, 0.0}, {3.0, 0.0}, {7.0, 0.0}}, lineOf(1), {1.0, 2.0, 4.0});
    const auto lengthAt = [&](const char* time)
    {
        run.setText("Time", time);
        return arrowsOf(field)[0].direction[0];
    };
    EXPECT_EQ(lengthAt("1"), 1.0);
    EXPECT_EQ(lengthAt("1.5"), 2.0);
    EXPECT_EQ(lengthAt("4"), 7.0);
    EXPECT_EQ(lengthAt("0.999"), 1.0);
    EXPECT_EQ(lengthAt("4.001"), 1.0);
    EXPECT_EQ(lengthAt("nan"), 1.0);
}

TEST_F(ShowHedgehogsTest, NoArrowsMakeAnEmptyDrawable)
{
    run.connect("Field", fieldOf<Vector3>({}, cloudOf<3>({})));
    EXPECT_EQ(execute(), "Number of Arrows: 0\n");
    EXPECT_TRUE(arrows().empty());
    const auto primitive = lines();
    ASSERT_NE(primitive, nullptr);
    EXPECT_EQ(primitive->numVertices(), 0U);
    EXPECT_EQ(primitive->boundingSphere(), graphics::BoundingSphere{});
    EXPECT_EQ(run.debugLog(), "");
}

TEST_F(ShowHedgehogsTest, SaysWhatItCannotDo)
{
    EXPECT_EQ(execute(), "");
    EXPECT_EQ(run.debugLog(), "Input Field not set.\n");
    EXPECT_EQ(run.graphics("Hedgehogs"), nullptr);
    EXPECT_THROW(run.connect("Field", fieldOf<Scalar>({1.0})), usage_error);

    run.connect("Field", fieldOf<Vector2>({{1.0, 0.0}}));
    execute();
    const auto shown = run.graphics("Hedgehogs");
    run.connect("Field", nullptr);
    execute();
    EXPECT_EQ(run.graphics("Hedgehogs"), shown);

    const auto cloud = cloudOf<2>({Vector2(0.0, 0.0)});
    run.connect("Field",
                addData(cloud, detail::Cells, std::vector<Vector2>{}, Precision::Float64, {}));
    EXPECT_EQ(errorOf<tavrin::logic_error>([&] { execute(); }), "Invalid grid");
    run.connect("Field", addData(cloud, DomainPart("Edges"), std::vector<Vector2>{},
                                 Precision::Float64, {}));
    EXPECT_EQ(errorOf<tavrin::logic_error>([&] { execute(); }),
              "Grid is neither cell nor point based");

    run.connect("Field", fieldOf<Vector2>({{1.0, 0.0}}));
    run.setDirectly("Vector anchor point at", "middle");
    for (const char* representation : {"line", "arrow", "tube arrow"})
    {
        run.setText("Representation", representation);
        EXPECT_EQ(errorOf<std::bad_function_call>([&] { execute(); }), "bad_function_call")
            << representation;
    }
    run.setDirectly("Representation", "cone");
    EXPECT_EQ(errorOf<tavrin::logic_error>([&] { execute(); }),
              "Invalid gui option for Representation.");
}

TEST_F(ShowHedgehogsTest, AdvisesOnAScaleWhereArrowsAreOutOfProportion)
{
    const auto hintOf = [&](std::shared_ptr<const FunctionBase> field, double scale = 1.0)
    {
        run.setText("Scale", toText(scale));
        arrowsOf(std::move(field));
        return run.hints().empty() ? std::string() : run.hints().back();
    };
    const auto suggestionFor = [&](std::shared_ptr<const FunctionBase> field)
    {
        hintOf(std::move(field));
        return run.suggestions().contains("Scale") ? run.suggestions().at("Scale") : "none";
    };
    // Neighbors 1 apart, the longest arrow 5.
    const auto field = fieldOf<Vector2>({{3.0, 4.0}, {0.0, 1.0}, {1.0, 0.0}});
    EXPECT_EQ(hintOf(field, 4.0), "");
    EXPECT_EQ(hintOf(field, 0.01), "");
    EXPECT_EQ(hintOf(field, 4.01), "the longest arrows have a length of 20, and neighboring "
                                   "samples are 1 apart; with \"Scale\" 0.2 both are equal");
    EXPECT_EQ(hintOf(field, -0.009), "the longest arrows have a length of 0.045, and neighboring "
                                     "samples are 1 apart; with \"Scale\" -0.2 both are equal");
    EXPECT_EQ(hintOf(field, 0.0), "");
    EXPECT_EQ(suggestionFor(field), "0.2");

    // A few marks for missing values do not count, whatever their number in a large field.
    for (const std::size_t count : {20UL, 1000UL, 200000UL})
    {
        std::vector<Vector2> values(count, Vector2(0.5, 0.0));
        for (std::size_t i = 7; i < count; i += 40)
            values[i] = Vector2(-1e9, 0.0);
        EXPECT_EQ(suggestionFor(fieldOf(values)), "2") << count;
    }
    // A field that is 0 nearly everywhere.
    std::vector<Vector2> jet(100, Vector2(0.0, 0.0));
    jet[50] = Vector2(4.0, 0.0);
    EXPECT_EQ(suggestionFor(fieldOf(jet)), "0.25");

    // The median of the edges along the axes: 4.
    const auto grid = std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {31, 31, 31}, .spacing = {0.1, 4.0, 1e6}});
    const std::vector<Vector3> ones(grid->numPoints(), Vector3(1e-3, 0.0, 0.0));
    EXPECT_EQ(suggestionFor(fieldOf(ones, grid)), "4000");
    EXPECT_EQ(suggestionFor(addData(grid, detail::Cells, std::vector<Vector3>(27000, ones[0]),
                                    Precision::Float64, {})),
              "4000");
    // 10000 points that fill a square of 99 x 99, in space.
    std::vector<Vector3> points;
    for (std::size_t i = 0; i < 10000; ++i)
        points.emplace_back(static_cast<double>(i % 100), static_cast<double>(i / 100), 5.0);
    EXPECT_EQ(
        suggestionFor(fieldOf(std::vector<Vector2>(10000, Vector2(0.0, 64.0)), cloudOf<3>(points))),
        "0.016");
    // Nothing to compare with.
    EXPECT_EQ(suggestionFor(fieldOf<Vector2>({{1e9, 0.0}})), "none");
    EXPECT_EQ(suggestionFor(fieldOf<Vector2>({{0.0, 0.0}, {0.0, 0.0}})), "none");

    // Lines end at single precision numbers; arrows do not.
    const auto far =
        fieldOf<Vector3>({{0.5, 0.0, 0.0}}, cloudOf<3>({Vector3(8388608.0, 0.0, 0.0)}));
    EXPECT_EQ(hintOf(far), "");
    run.setText("Representation", "line");
    run.execute(neverAbort);
    EXPECT_EQ(run.hints(),
              (std::vector<std::string>{
                  "the longest lines have a length of 0.5, and their ends are rounded "
                  "to multiples of about 1 here; the other representations are exact"}));
}

TEST_F(ShowHedgehogsTest, TellsWhatIsNotShown)
{
    const double infinity = std::numeric_limits<double>::infinity();
    arrowsOf(fieldOf<Vector2>({{1.0, 0.0}, {nan, 0.0}, {1.0, infinity}, {1.0, 0.0}}));
    EXPECT_EQ(run.hints(), (std::vector<std::string>{
                               "2 of 4 arrows have a position or a vector that is not finite, and "
                               "are not drawn"}));

    run.setText("Time", "3");
    arrowsOf(fieldOf<Vector2>({{1.0, 0.0}, {1.0, 0.0}}, lineOf(1), {0.0, 2.0}));
    EXPECT_EQ(run.hints(),
              (std::vector<std::string>{
                  "the field has values from time 0 to 2, none at 3; those at 0 are shown"}));
}

TEST_F(ShowHedgehogsTest, TellsWhichArrowMakesAllOthersLookTiny)
{
    std::vector<Vector2> values(200, Vector2(0.0, 1.0));
    arrowsOf(fieldOf(values));
    EXPECT_TRUE(run.hints().empty());
    values[7] = Vector2(3e6, 0.0);
    arrowsOf(fieldOf(values));
    EXPECT_EQ(
        run.hints(),
        (std::vector<std::string>{
            "nearly all arrows lie within 180 of one another, but the one at (7, 0, 0) reaches "
            "3e+06 beyond them; a picture of all shows most of them tiny"}));

    std::vector<Vector3> points(100, Vector3(1.0, 2.0, 3.0));
    for (std::size_t i = 0; i < 99; ++i)
        points[i] += 0.01 * static_cast<double>(i) * Vector3(1.0, 1.0, 1.0);
    points[99] = Vector3(0.0, -5000.0, 0.0);
    arrowsOf(
        fieldOf<Vector3>(std::vector<Vector3>(100, Vector3(0.01, 0.0, 0.0)), cloudOf<3>(points)));
    EXPECT_EQ(run.hints(),
              (std::vector<std::string>{
                  "nearly all arrows lie within 0.9 of one another, but the one at (0, -5000, 0) "
                  "reaches 5000 beyond them; a picture of all shows most of them tiny"}));
}

TEST_F(ShowHedgehogsTest, LeavesOutValuesThatAreMarkedAsInvalid)
{
    // Two steps of three values: the first is invalid in the first step, the last in the second.
    const auto mask = std::make_shared<const ValidityMask>(ValidityMask{0, 1, 1, 1, 1, 0});
    const std::vector<Vector2> values{{nan, 0.0}, {2.0, 0.0}, {3.0, 0.0},
                                      {1.0, 0.0}, {2.0, 0.0}, {0.0, 0.0}};
    const auto field =
        addData(lineOf(3), PointSetBase::Points, values, Precision::Float64, {0.0, 1.0}, "v", mask);
    run.connect("Color Map", grayMap());
    const auto startsAt = [&](const char* time)
    {
        run.setText("Time", time);
        std::vector<double> starts;
        for (const ArrowGlyph& arrow : arrowsOf(field))
            starts.push_back(arrow.start[0]);
        return starts;
    };
    EXPECT_EQ(startsAt("0"), (std::vector{1.0, 2.0}));
    EXPECT_EQ(run.hints(),
              (std::vector<std::string>{"1 of 3 values are marked as outside and left out"}));
    EXPECT_FLOAT_EQ(arrows()[1].color.red, 0.03F);
    EXPECT_EQ(startsAt("1"), (std::vector{0.0, 1.0}));
    EXPECT_EQ(startsAt("0.5"), (std::vector{1.0}));
    // A time that the field does not have shows the first step.
    EXPECT_EQ(startsAt("7"), (std::vector{1.0, 2.0}));
    EXPECT_EQ(lines()->numVertices(), 4U);
}

}
