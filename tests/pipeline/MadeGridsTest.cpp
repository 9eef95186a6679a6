#include <support/TemporaryFolder.hpp>
#include <support/abortFlags.hpp>
#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/pipeline/MadeGrids.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;
using pipeline::MadeGrid;

using Objects = std::vector<std::shared_ptr<const DataObject>>;

/// Grids that are described by a text.
class MadeGrids : public testing::Test
{
protected:
    std::shared_ptr<const Domain> make(const std::string& text, const Objects& others = {},
                                       std::size_t dimension = 1)
    {
        return MadeGrid::parse(text).make(others, mLoader, dimension);
    }

    template<typename Grid>
    std::shared_ptr<const Grid> makeA(const std::string& text, const Objects& others = {},
                                      std::size_t dimension = 1)
    {
        return std::dynamic_pointer_cast<const Grid>(make(text, others, dimension));
    }

    std::string complaint(const std::string& text, const Objects& others = {})
    {
        return errorOf<usage_error>([&] { make(text, others); });
    }

    TemporaryFolder mFolder;
    io::Loader mLoader{{}, neverAbort};
};

TEST_F(MadeGrids, AreLinesThatReachBothEnds)
{
    const auto line = makeA<UnstructuredGrid<2>>("@line:0.1,-3,0:0.1,3,0:201");
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->numPoints(), 201U);
    EXPECT_EQ(line->numCells(), 200U);
    EXPECT_EQ(line->cellType(199), CellType::Lines);
    EXPECT_EQ(line->cell(199).pointIndex(1), 200U);
    EXPECT_EQ(line->point(0), (Vector2{0.1, -3}));
    EXPECT_EQ(line->point(100), (Vector2{0.1, 0}));
    EXPECT_EQ(line->point(200), (Vector2{0.1, 3}));
    EXPECT_NE(makeA<UnstructuredGrid<1>>("@line:0:1e3:2"), nullptr);
    EXPECT_NE(makeA<UnstructuredGrid<3>>("@line:0,0,1:1,0,1:2"), nullptr);
    // With further coordinates where they are asked for.
    EXPECT_NE(makeA<UnstructuredGrid<3>>("@line:0:1:2", {}, 3), nullptr);
    EXPECT_FALSE(MadeGrid::parse("@line:0:1:2").dependsOnOthers());
}

TEST_F(MadeGrids, AreBoxesBetweenCorners)
{
    const auto box = makeA<UniformGrid<3>>("@box:5x3x2:1,2,3:-1,0,4");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->size(), (GridSize{5, 3, 2}));
    EXPECT_EQ(box->layout().origin, (Vector3{-1, 0, 3}));
    EXPECT_EQ(box->layout().spacing, (Vector3{0.5, 1, 1}));
    EXPECT_EQ(makeA<UniformGrid<2>>("@box:5x3:0,0:4,2")->size(), (GridSize{5, 3, 1}));
    EXPECT_EQ(makeA<UniformGrid<3>>("@box:5x3:0,0:4,2", {}, 3)->size(), (GridSize{5, 3, 1}));
    // A plane that does not lie at 0 has three coordinates.
    EXPECT_EQ(makeA<UniformGrid<3>>("@box:5x3:0,0,7:4,2,7")->point(14), (Vector3{4, 2, 7}));
    EXPECT_EQ(makeA<UniformGrid<1>>("@box:5:0:4")->numPoints(), 5U);
}

TEST_F(MadeGrids, SpanTheBoundsOfOtherData)
{
    using Coordinates = RectilinearGrid<2>::Coordinates;
    const auto grid = std::make_shared<const RectilinearGrid<2>>(Coordinates{{{0, 1, 8}, {-1, 3}}});
    const std::shared_ptr<const Domain> far =
        std::make_shared<const RectilinearGrid<2>>(Coordinates{{{9, 10}, {0, 1}}});
    const auto function = addData(far, PointSetBase::Points, std::vector<Scalar>(4),
                                  Precision::Float64, std::vector<double>{});
    const auto over = [&](const Objects& others)
    { return makeA<UniformGrid<2>>("@box:3x5", others)->layout().spacing; };
    EXPECT_TRUE(MadeGrid::parse("@box:3x5").dependsOnOthers());
    EXPECT_EQ(over({grid}), (Vector2{4, 1}));
    EXPECT_EQ(over({grid, function}), (Vector2{5, 1}));
    EXPECT_EQ(over({std::make_shared<DataObjectBundle>(Objects{grid, function})}), (Vector2{5, 1}));
    EXPECT_EQ(complaint("@box:3x5"),
              "@box:3x5: there is no data with points whose bounds it could span; give them as in "
              "@box:50x25x10:0,0,0:1,1,1");
    EXPECT_EQ(complaint("@box:3x5x2", {grid}),
              "@box:3x5x2: z is 0 everywhere in the bounds, so that 1 point along z is enough");
    EXPECT_EQ(
        complaint("@box:3", {grid}),
        "@box:3: 1 point along y cannot span -1 to 3; @box:50x25x10 has a number for each axis");
}

TEST_F(MadeGrids, TakePointsAndBoundsFromFiles)
{
    mFolder.write("probes.csv", "x,y,p\n0,1,5\n2,3,6\n");
    const std::string file = (mFolder.path() / "probes.csv").string();
    const auto points = makeA<PointCloud<2>>("@points:" + file);
    ASSERT_NE(points, nullptr);
    EXPECT_EQ(points->point(1), (Vector2{2, 3}));
    EXPECT_NE(makeA<PointCloud<3>>("@points:" + file, {}, 3), nullptr);
    EXPECT_NE(makeA<PointCloud<3>>("@points:" + file + "?dimension=3"), nullptr);
    EXPECT_EQ(makeA<UniformGrid<2>>("@box:3x5:" + file)->layout().spacing, (Vector2{1, 0.5}));
    EXPECT_EQ(MadeGrid::parse("@box:3x5:" + file).files(mLoader),
              std::vector<std::filesystem::path>{file});
    EXPECT_TRUE(MadeGrid::parse("@box:3x5").files(mLoader).empty());
    EXPECT_EQ(errorOf<io::FileError>([&] { make("@points:" + file + "x"); }),
              file + "x: no such file");
}

TEST_F(MadeGrids, SayWhatWouldBeRight)
{
    const std::string line = ": a line is @line:X,Y,Z:X,Y,Z:POINTS, as in @line:0,0,0:1,0,0:100";
    for (const std::string text :
         {"@line", "@line:", "@line:0,0,0:1,0,0", "@line:0:1:2:3", "@line:0:1:-2", "@line:0:1:2.5",
          "@line:0,0,0,0:1:2", "@line:0:x:2", "@line:0:inf:2", "@line:0::2"})
        EXPECT_EQ(complaint(text), text + line);
    const std::string box = ": a box is @box:50x25x10 over the bounds of the other data, "
                            "@box:50x25x10:FILE, or @box:50x25x10:X,Y,Z:X,Y,Z";
    for (const std::string text : {"@box", "@box:", "@box:5x", "@box:5x5x5x5", "@box:5,5",
                                   "@box:5x5:", "@box:5x5:0,0:1,y", "@box:5x5:0,0"})
        EXPECT_EQ(complaint(text), text + box);
    EXPECT_EQ(complaint("@line:0:1:0"),
              "@line:0:1:0: is an empty grid; a number of points is 1 or more");
    EXPECT_EQ(complaint("@line:0:1:1"),
              "@line:0:1:1: is an empty line grid; a line has 2 points or more");
    EXPECT_EQ(complaint("@line:1,0:1:5"),
              "@line:1,0:1:5: is an empty line grid; its two ends are equal");
    EXPECT_EQ(complaint("@box:5x0"), "@box:5x0: is an empty grid; a number of points is 1 or more");
    EXPECT_EQ(
        complaint("@box:5x5:1,1:1,2"),
        "@box:5x5:1,1:1,2: x is 1 everywhere in the bounds, so that 1 point along x is enough");
    for (const std::string text : {"@box:1000000x1000000x1000000", "@line:0:1:99999999999999999"})
        EXPECT_EQ(complaint(text), text + ": has more points than can be handled, which are 2^40");
    EXPECT_EQ(complaint("@points:"), "@points:: points are @points:FILE, as in @points:probes.csv");
    EXPECT_EQ(complaint("@lin:0:1:2"), "no grid is called \"@lin\"; did you mean \"@line\"?");
}

}
