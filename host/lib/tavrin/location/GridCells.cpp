#include <tavrin/location/GridCells.hpp>

#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/location/Inverse.hpp>
#include <tavrin/location/Tolerance.hpp>

#include <cmath>
#include <limits>
#include <tuple>

namespace tavrin
{

namespace
{

constexpr std::size_t pointsPerBlock = 1024;

/// Calls `work(first, count)` for blocks that cover all points, on all threads.
template<typename Work>
void forPointBlocks(std::size_t numPoints, const Work& work)
{
#pragma omp parallel for schedule(static) if (numPoints > pointsPerBlock)
    for (std::size_t first = 0; first < numPoints; first += pointsPerBlock)
        work(first, std::min(pointsPerBlock, numPoints - first));
}

/// The range of the finite coordinates along an axis without the lowest and the highest eighth, estimated
/// from about a thousand points.
template<std::size_t D>
std::pair<double, double> innerRange(std::span<const Tensor<double, D>> points, std::size_t axis)
{
    const std::size_t step = std::max<std::size_t>(1, points.size() / 1000);
    std::vector<double> coordinates;
    for (std::size_t i = 0; i < points.size(); i += step)
        if (std::isfinite(points[i][axis]))
            coordinates.push_back(points[i][axis]);
    if (coordinates.empty())
        return {0.0, 0.0};
    std::ranges::sort(coordinates);
    const std::size_t eighth = coordinates.size() / 8;
    return {coordinates[eighth], coordinates[coordinates.size() - 1 - eighth]};
}

}

template<std::size_t D>
GridCells<D>::GridCells(const EmbeddedCellComplex<D>& grid)
    : mSize(grid.numCells()), mRounding(roundingOf(grid.coordinatePrecision()))
{
    if (mSize == 0 || grid.numPoints() == 0)
        return;
    if (mSize >= std::numeric_limits<std::uint32_t>::max())
        throw runtime_error("positions can be looked up in grids of less than 2^32 cells, not of " +
                            std::to_string(mSize));
    takeCells(grid);
    takePoints(grid);
}

template<std::size_t D>
void GridCells<D>::takeCells(const EmbeddedCellComplex<D>& grid)
{
    mCommonType = grid.cellType(0);
    mCommonCount = numVerticesOf(mCommonType);
    if (const auto* const structured = dynamic_cast<const StructuredGrid<D>*>(&grid))
    {
        const GridNumbering& numbering = structured->numbering();
        const auto axes = numbering.axes();
        for (std::size_t i = 0; i < axes.size(); ++i)
        {
            mAxisCells[i] = static_cast<std::uint32_t>(axes[i].cells);
            mAxisStride[i] = axes[i].pointStride;
        }
        mCornerOffsets = numbering.cornerOffsets();
        return;
    }
    const CellTable& cells = dynamic_cast<const UnstructuredGrid<D>&>(grid).cells();
    mTypes = cells.types.data();
    mOffsets = viewOf(cells.offsets);
    mConnectivity = viewOf(cells.connectivity);
    mFirstOffset = mOffsets[0];
    if (std::ranges::any_of(cells.types, [&](CellType type) { return type != mCommonType; }))
        mCommonType = CellType::Invalid;
}

template<std::size_t D>
void GridCells<D>::takePoints(const EmbeddedCellComplex<D>& grid)
{
    const std::size_t numPoints = grid.numPoints();
    Position probe;
    const Position* const first = grid.points(0, std::span(&probe, 1)).data();
    if (first != &probe)
        mPoints = first;
    else
    {
        mCopiedPoints = LargeVector<Position>(numPoints);
        forPointBlocks(numPoints,
                       [&](std::size_t begin, std::size_t count)
                       {
                           const std::span target(mCopiedPoints.data() + begin, count);
                           const auto points = grid.points(begin, target);
                           if (points.data() != target.data())
                               std::ranges::copy(points, target.begin());
                       });
        mPoints = mCopiedPoints.data();
    }
    measurePoints(numPoints);
}

template<std::size_t D>
void GridCells<D>::measurePoints(std::size_t numPoints)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Box<D> empty;
    std::ranges::fill(empty.lower, infinity);
    std::ranges::fill(empty.upper, -infinity);
    mBox = empty;
    forPointBlocks(numPoints,
                   [&](std::size_t begin, std::size_t count)
                   {
                       Box<D> box = empty;
                       for (const Position& point : std::span(mPoints + begin, count))
                           for (std::size_t i = 0; i < D; ++i)
                               if (std::isfinite(point[i]))
                               {
                                   box.lower[i] = std::min(box.lower[i], point[i]);
                                   box.upper[i] = std::max(box.upper[i], point[i]);
                               }
#pragma omp critical(tavrinGridCellsBounds)
                       for (std::size_t i = 0; i < D; ++i)
                       {
                           mBox.lower[i] = std::min(mBox.lower[i], box.lower[i]);
                           mBox.upper[i] = std::max(mBox.upper[i], box.upper[i]);
                       }
                   });
    for (std::size_t i = 0; i < D; ++i)
    {
        if (!(mBox.lower[i] <= mBox.upper[i]))
            mBox.lower[i] = mBox.upper[i] = 0.0;
        std::tie(mBoxOfMost.lower[i], mBoxOfMost.upper[i]) =
            innerRange(std::span(mPoints, numPoints), i);
    }
    double largest = std::max(maximumNorm(mBoxOfMost.lower), maximumNorm(mBoxOfMost.upper));
    if (largest == 0.0)
        largest = std::max(maximumNorm(mBox.lower), maximumNorm(mBox.upper));
    // Products of three coordinates, and their reciprocals, stay far inside the range of doubles.
    if (largest > 0.0 && (largest < 1e-30 || largest > 1e30))
        mScale = std::ldexp(1.0, std::clamp(-std::ilogb(largest), -1000, 1000));
    for (Box<D>* const box : {&mBox, &mBoxOfMost})
    {
        box->lower *= mScale;
        box->upper *= mScale;
    }
}

template<std::size_t D>
typename GridCells<D>::Indices GridCells<D>::viewOf(const IndexArray& indices)
{
    Indices view;
    if (const auto* const narrow = std::get_if<std::span<const std::int32_t>>(&indices.storage()))
        view.narrow = narrow->data();
    else
        view.wide = std::get<std::span<const std::int64_t>>(indices.storage()).data();
    return view;
}

template class GridCells<1>;
template class GridCells<2>;
template class GridCells<3>;

}
