#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/Subdomain.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>

#include <gtest/gtest.h>

#include <numeric>

namespace
{

using namespace support;
using namespace tavrin;

std::vector<std::size_t> verticesOf(const Cell& cell)
{
    return {cell.pointIndices().begin(), cell.pointIndices().end()};
}

using Axis = RectilinearGrid<1>::Coordinates;

TEST(UniformGrid, ComputesPointsFromIndicesThatNeedNotStartAtZero)
{
    const UniformGrid<3> grid({.size = {3, 2, 2},
                               .origin = {1.0, 0.0, 0.0},
                               .spacing = {0.5, 2.0, -1.0},
                               .firstIndex = {10, -1, 0}});
    EXPECT_EQ(grid.numPoints(), 12U);
    EXPECT_EQ(grid.numCells(), 2U);
    EXPECT_EQ(grid.point(0), Vector3(6.0, -2.0, 0.0));
    EXPECT_EQ(grid.point(11), Vector3(7.0, 0.0, -1.0));
    const auto box = grid.boundingBox();
    EXPECT_EQ(box.getDimensions(), 3U);
    EXPECT_EQ(box[2], std::pair(-1.0, 0.0));
    EXPECT_EQ(verticesOf(grid.cell(1)), (std::vector<std::size_t>{1, 2, 5, 4, 7, 8, 11, 10}));
    EXPECT_TRUE(grid.isA(PointSet<3>::classTypeId()));
    EXPECT_TRUE(grid.isA(EmbeddedCellComplex<3>::classTypeId()));
    EXPECT_TRUE(grid.isA(Domain::classTypeId()));
    EXPECT_FALSE(grid.isA(PointSet<2>::classTypeId()));
}

TEST(UniformGrid, FollowsItsDirections)
{
    const UniformGrid<2> grid({.size = {2, 2, 1},
                               .origin = {1.0, 1.0},
                               .spacing = {2.0, 3.0},
                               .direction = {0.0, -1.0, 1.0, 0.0}});
    EXPECT_TRUE(grid.isOriented());
    EXPECT_EQ(grid.point(1), Vector2(1.0, 3.0));
    EXPECT_EQ(grid.point(2), Vector2(-2.0, 1.0));
}

TEST(UniformGrid, RefusesWhatIsNoGrid)
{
    EXPECT_EQ(errorOf(
                  [] {
                      UniformGrid<2>({.size = {2, 2, 1}, .spacing = {1.0, 0.0}});
                  }),
              "axis 1 of the grid has several points at one position");
    EXPECT_EQ(errorOf(
                  [] {
                      UniformGrid<1>({.size = {2, 2, 1}, .spacing = {1.0}});
                  }),
              "axis 1 of the grid has several points at one position");
    EXPECT_EQ(errorOf(
                  [] {
                      UniformGrid<1>({.size = {2, 1, 1}, .spacing = {NAN}});
                  }),
              "origin, spacing or direction of the grid is not finite");
}

TEST(StructuredGrid, HasCellsOfAsManyDimensionsAsItHasLongAxes)
{
    const auto cells = [](const GridSize& size)
    {
        std::vector<Vector3> points(size[0] * size[1] * size[2], Vector3{});
        const CurvilinearGrid<3> grid(size, stored(std::move(points)));
        const std::size_t last = grid.numCells() - 1;
        return grid.numCells() == 0 ? std::vector<std::size_t>{} : verticesOf(grid.cell(last));
    };
    EXPECT_EQ(cells({3, 1, 2}), (std::vector<std::size_t>{1, 2, 5, 4}));
    EXPECT_EQ(cells({1, 1, 3}), (std::vector<std::size_t>{1, 2}));
    EXPECT_EQ(cells({1, 1, 1}), (std::vector<std::size_t>{0}));
    EXPECT_EQ(cells({0, 0, 0}), (std::vector<std::size_t>{}));
    EXPECT_EQ(errorOf(
                  [] {
                      CurvilinearGrid<3>({2, 2, 2}, stored(std::vector<Vector3>(7)));
                  }),
              "a grid of 2 x 2 x 2 points cannot have 7");
}

TEST(RectilinearGrid, TakesMonotonicCoordinatesOnly)
{
    const RectilinearGrid<2> grid({std::vector{0.0, 1.0, 4.0}, std::vector{3.0, 2.0}});
    EXPECT_EQ(grid.point(5), Vector2(4.0, 2.0));
    EXPECT_EQ(errorOf(
                  [] {
                      RectilinearGrid<1>(Axis{std::vector{0.0, 1.0, 1.0}});
                  }),
              "the coordinates of axis 0 neither ascend nor descend");
    EXPECT_EQ(errorOf(
                  [] {
                      RectilinearGrid<1>(Axis{std::vector<double>{0.0, INFINITY}});
                  }),
              "the coordinates of axis 0 are not finite");
}

/// Two triangles and a line on four points.
CellTable mixedCells()
{
    return {{CellType::Triangles, CellType::Lines, CellType::Triangles},
            IndexArray({0, 3, 5, 8}),
            IndexArray({0, 1, 2, 1, 2, 2, 3, 0})};
}

std::vector<Vector2> fourPoints()
{
    return {{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}};
}

TEST(UnstructuredGrid, ListsItsCells)
{
    const UnstructuredGrid<2> grid(stored(fourPoints()), mixedCells());
    EXPECT_EQ(grid.numElements(PointSetBase::Points), 4U);
    EXPECT_EQ(grid.numElements(detail::Cells), 3U);
    EXPECT_EQ(grid.numElements(DomainPart("Edges")), 0U);
    EXPECT_EQ(grid.cell(1).type(), CellType::Lines);
    EXPECT_EQ(verticesOf(grid.cell(2)), (std::vector<std::size_t>{2, 3, 0}));
}

TEST(UnstructuredGrid, RefusesInconsistentCellsWithTheirNumber)
{
    const auto message = [](CellTable table)
    { return errorOf([&] { UnstructuredGrid<2>(stored(fourPoints()), std::move(table)); }); };
    auto cells = mixedCells();
    cells.connectivity = IndexArray({0, 1, 9, 1, 2, 2, -3, 0});
    EXPECT_EQ(message(cells), "2 cells with vertices beyond the 4 points, the first is cell 0");
    cells = mixedCells();
    cells.types[1] = CellType::Quads;
    EXPECT_EQ(message(cells),
              "1 cell with another number of vertices than the type has, the first is cell 1");
    cells.types[2] = static_cast<CellType>(200);
    EXPECT_EQ(message(cells), "1 cell of a type that does not exist, the first is cell 2");
    cells = mixedCells();
    cells.offsets = IndexArray({0, 3, 2, 8});
    EXPECT_EQ(message(cells),
              "1 cell with offsets that descend or leave the connectivity, the first is cell 1");
    cells.offsets = IndexArray({0, 3, 5, 800});
    EXPECT_EQ(message(cells),
              "1 cell with offsets that descend or leave the connectivity, the first is cell 2");
    cells.offsets = IndexArray(std::vector<std::int64_t>{0, 3});
    EXPECT_EQ(message(cells), "3 cells need 4 offsets, not 2");
}

TEST(DomainPart, OwnsItsName)
{
    std::string name = "a part with a name of more than a few letters";
    const DomainPart part(name);
    name.assign(name.size(), '?');
    EXPECT_EQ(part, DomainPart("a part with a name of more than a few letters"));
    EXPECT_FALSE(part == PointSetBase::Points);
}

TEST(Domain, EqualsWhatHasTheSameElementsAtTheSamePlaces)
{
    const UnstructuredGrid<2> grid(stored(fourPoints()), mixedCells());
    EXPECT_TRUE(grid.equals(UnstructuredGrid<2>(stored(fourPoints()), mixedCells())));
    auto otherCells = mixedCells();
    otherCells.connectivity = IndexArray({0, 1, 2, 1, 2, 2, 0, 3});
    EXPECT_FALSE(grid.equals(UnstructuredGrid<2>(stored(fourPoints()), otherCells)));
    auto otherPoints = fourPoints();
    otherPoints[3][0] = -1e-12;
    EXPECT_FALSE(grid.equals(UnstructuredGrid<2>(stored(otherPoints), mixedCells())));
    EXPECT_FALSE(grid.equals(PointCloud<2>(stored(fourPoints()))));

    // The points are the same, the cells are not.
    const CurvilinearGrid<2> wide({4, 1, 1}, stored(fourPoints()));
    EXPECT_FALSE(wide.equals(CurvilinearGrid<2>({2, 2, 1}, stored(fourPoints()))));
    const UniformGrid<1>::Layout layout{.size = {3, 1, 1}, .spacing = {1.0}};
    EXPECT_TRUE(UniformGrid<1>(layout).equals(UniformGrid<1>(layout)));
    EXPECT_FALSE(
        UniformGrid<1>(layout).equals(RectilinearGrid<1>(Axis{std::vector{0.0, 1.0, 2.0}})));
}

TEST(Subdomain, TakesElementsOfItsParent)
{
    const auto parent = std::make_shared<PointCloud<2>>(stored(fourPoints()));
    const Subdomain part(parent, PointSetBase::Points, {3, 1});
    EXPECT_EQ(part.numElements(PointSetBase::Points), 2U);
    EXPECT_EQ(part.getLookup()[0], 3U);
    EXPECT_EQ(part.parent(), parent);
    EXPECT_FALSE(part.isA(PointSetBase::classTypeId()));
    EXPECT_THROW(Subdomain(parent, PointSetBase::Points, {4}), logic_error);
    EXPECT_THROW(Subdomain(nullptr, PointSetBase::Points, {}), logic_error);
}

TEST(PointSet, WithoutPointsHasAnEmptyBox)
{
    const PointCloud<1> none(stored(std::vector<Vector1>{}));
    EXPECT_GT(none.boundingBox()[0].first, none.boundingBox()[0].second);
}

}
