#include <tavrin/io/GridBuilder.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/io/CellConversion.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <cmath>

namespace tavrin::io
{

namespace
{

/// Which coordinates of all points are 0.
struct ZeroCoordinates
{
    bool y = true;
    bool z = true;
};

/// Checks in one pass that all points are finite, and which coordinates are 0 everywhere.
ZeroCoordinates examine(const StoredArray& points)
{
    std::size_t notFinite = 0;
    bool y = true;
    bool z = true;
    visitPrecision(points.precision,
                   [&]<typename Stored>()
                   {
                       const auto* const coordinates = points.as<Stored>();
#pragma omp parallel for schedule(static) reduction(+ : notFinite) \
    reduction(&& : y, z) if (points.tuples > worthThreads)
                       for (std::size_t i = 0; i < points.tuples; ++i)
                       {
                           const Stored* const point = coordinates + 3 * i;
                           if constexpr (std::is_floating_point_v<Stored>)
                               notFinite += std::isfinite(point[0]) && std::isfinite(point[1]) &&
                                                    std::isfinite(point[2])
                                                ? 0
                                                : 1;
                           y = y && point[1] == Stored{0};
                           z = z && point[2] == Stored{0};
                       }
                   });
    if (notFinite > 0)
        throw Malformed(std::to_string(notFinite) +
                        (notFinite == 1 ? " point has" : " points have") +
                        " coordinates that are not finite");
    return {y, z};
}

/// The wanted dimension, or else the smallest one that keeps all coordinates that are not 0.
std::size_t chooseDimension(const ZeroCoordinates& zero, std::optional<std::size_t> wanted)
{
    const std::size_t smallest = !zero.z ? 3 : !zero.y ? 2 : 1;
    if (wanted.value_or(3) < smallest)
        throw usage_error("the points need " + std::to_string(smallest) +
                          " coordinates, so that ?dimension=" + std::to_string(*wanted) +
                          " does not fit");
    return wanted.value_or(smallest);
}

/// Calls `visitor.operator()<D>()` and returns the result.
template<typename Visitor>
auto visitDimension(std::size_t dimension, const Visitor& visitor)
{
    if (dimension == 1)
        return visitor.template operator()<1>();
    if (dimension == 2)
        return visitor.template operator()<2>();
    return visitor.template operator()<3>();
}

/// The first D coordinates of stored points.
template<std::size_t D>
std::shared_ptr<const ValueArray<Tensor<double, D>>> wrapPoints(const StoredArray& points)
{
    std::shared_ptr<const ValueArray<Tensor<double, D>>> wrapped;
    visitPrecision(points.precision,
                   [&]<typename Stored>()
                   {
                       wrapped =
                           std::make_shared<const WrappedValueArray<Tensor<double, D>, Stored>>(
                               points.as<Stored>(), points.tuples, 3, points.owner);
                   });
    return wrapped;
}

PositionOf positionsIn(const StoredArray& points)
{
    return [values = wrapPoints<3>(points)](std::int64_t point)
    { return (*values)[static_cast<std::size_t>(point)]; };
}

/// The first D coordinates of the layout of a file; nothing where the axes need the others.
template<std::size_t D>
std::optional<typename UniformGrid<D>::Layout> layoutOf(const DataFile& file)
{
    typename UniformGrid<D>::Layout layout;
    layout.size = file.size();
    for (std::size_t i = 0; i < D; ++i)
    {
        layout.origin[i] = file.origin[i];
        layout.spacing[i] = file.spacing[i];
        layout.firstIndex[i] = file.extent[2 * i];
        for (std::size_t j = 0; j < D; ++j)
            layout.direction(i, j) = file.direction(i, j);
    }
    for (std::size_t axis = D; axis < 3; ++axis)
    {
        if (layout.size[axis] > 1)
            return std::nullopt;
        for (std::size_t i = 0; i < D; ++i)
            if (file.direction(axis, i) != 0.0 || file.direction(i, axis) != 0.0)
                return std::nullopt;
    }
    return layout;
}

BuiltGrid buildUniform(const DataFile& file, std::optional<std::size_t> dimension)
{
    const UniformGrid<3> whole(layoutOf<3>(file).value());
    const double determinant =
        file.direction(0, 0) * (file.direction(1, 1) * file.direction(2, 2) -
                                file.direction(1, 2) * file.direction(2, 1)) -
        file.direction(0, 1) * (file.direction(1, 0) * file.direction(2, 2) -
                                file.direction(1, 2) * file.direction(2, 0)) +
        file.direction(0, 2) * (file.direction(1, 0) * file.direction(2, 1) -
                                file.direction(1, 1) * file.direction(2, 0));
    if (determinant == 0.0)
        throw Malformed("the direction matrix is singular");
    // A coordinate is 0 at all points if it is 0 at the corners.
    ZeroCoordinates zero;
    for (std::size_t corner = 0; corner < 8 && whole.numPoints() > 0; ++corner)
    {
        std::size_t index = 0;
        std::size_t stride = 1;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            index += (corner >> axis & 1U) * (whole.size()[axis] - 1) * stride;
            stride *= whole.size()[axis];
        }
        const Vector3 position = whole.point(index);
        if (!std::ranges::all_of(position, [](double x) { return std::isfinite(x); }))
            throw Malformed("its points are not finite");
        zero.y = zero.y && position[1] == 0.0;
        zero.z = zero.z && position[2] == 0.0;
    }
    const std::size_t chosen = chooseDimension(zero, dimension);
    for (std::size_t tried = chosen; tried <= 3; ++tried)
    {
        std::shared_ptr<const Domain> domain = visitDimension(
            tried,
            [&]<std::size_t D>() -> std::shared_ptr<const Domain>
            {
                const auto layout = layoutOf<D>(file);
                return layout ? std::make_shared<const UniformGrid<D>>(*layout) : nullptr;
            });
        if (domain != nullptr)
            return {std::move(domain), {}, {}, {}};
        if (dimension)
            throw usage_error("the axes of the grid leave " + std::to_string(tried) +
                              " coordinates, so that ?dimension=" + std::to_string(tried) +
                              " does not fit");
    }
    throw Malformed("the grid has no layout");
}

BuiltGrid buildRectilinear(DataFile& file, std::optional<std::size_t> dimension)
{
    std::array<std::vector<double>, 3> all;
    Precision precision = Precision::Float64;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        auto [values, stored] = file.readCoordinates(axis);
        all[axis] = std::move(values);
        if (stored == Precision::Float32)
            precision = stored;
    }
    const auto isZero = [](const std::vector<double>& coordinates)
    { return coordinates == std::vector<double>{0.0}; };
    const std::size_t chosen = chooseDimension({isZero(all[1]), isZero(all[2])}, dimension);
    return visitDimension(
        chosen,
        [&]<std::size_t D>() -> BuiltGrid
        {
            typename RectilinearGrid<D>::Coordinates coordinates;
            std::copy_n(all.begin(), D, coordinates.begin());
            return {std::make_shared<const RectilinearGrid<D>>(coordinates, precision), {}, {}, {}};
        });
}

BuiltGrid buildWithPoints(DataFile& file, std::optional<std::size_t> dimension,
                          const volatile bool& abortFlag)
{
    const StoredArray points = file.readPoints();
    const std::size_t chosen = chooseDimension(examine(points), dimension);
    if (file.structuring == StructuringType::Curvilinear)
        return visitDimension(chosen,
                              [&]<std::size_t D>() -> BuiltGrid
                              {
                                  return {std::make_shared<const CurvilinearGrid<D>>(
                                              file.size(), wrapPoints<D>(points)),
                                          {},
                                          {},
                                          {}};
                              });
    ConvertedCells cells =
        convertCells(file.readCells(), file.numPoints, positionsIn(points), abortFlag);
    return visitDimension(
        chosen,
        [&]<std::size_t D>() -> BuiltGrid
        {
            std::shared_ptr<const Domain> domain;
            if (cells.table.types.empty())
                domain = std::make_shared<const PointCloud<D>>(wrapPoints<D>(points));
            else
                domain = std::make_shared<const UnstructuredGrid<D>>(wrapPoints<D>(points),
                                                                     std::move(cells.table));
            std::shared_ptr<const std::vector<std::size_t>> origin;
            if (cells.origin)
                origin = std::make_shared<const std::vector<std::size_t>>(std::move(*cells.origin));
            return {std::move(domain), {}, std::move(origin), std::move(cells.warnings)};
        });
}

/// Which elements have one of the bits in their mark; empty where none has.
std::vector<bool> findMarked(const DataFile::Marks& marks, std::uint8_t bits)
{
    const StoredArray& array = marks.array;
    std::vector<bool> isMarked(array.tuples, false);
    visitPrecision(array.precision,
                   [&]<typename Stored>()
                   {
                       for (std::size_t i = 0; i < array.tuples; ++i)
                       {
                           const auto mark =
                               static_cast<double>(array.as<Stored>()[i * array.components]);
                           if (!(mark >= 0.0 && mark <= 255.0))
                               throw Malformed("has marks of ghosts that are not bytes");
                           isMarked[i] = (static_cast<std::uint8_t>(mark) & bits) != 0;
                       }
                   });
    return std::ranges::find(isMarked, true) == isMarked.end() ? std::vector<bool>{} : isMarked;
}

/// The elements of a file that are blanked or ghosts; each list is empty where none is.
struct Ghosts
{
    std::vector<bool> removedPoints;
    std::vector<bool> duplicatePoints;
    std::vector<bool> removedCells;

    explicit Ghosts(DataFile& file)
    {
        if (const auto marks = file.readMarks(Association::Points))
        {
            removedPoints = findMarked(*marks, marks->bits.removed);
            duplicatePoints = findMarked(*marks, marks->bits.duplicate);
        }
        if (const auto marks = file.readMarks(Association::Cells))
            removedCells = findMarked(*marks, marks->bits.removed);
    }

    bool isEmpty() const
    {
        return removedPoints.empty() && duplicatePoints.empty() && removedCells.empty();
    }
};

/// The grid without its ghosts, without the cells at removed points, and without the points that only
/// removed cells have.
template<std::size_t D>
BuiltGrid withoutGhosts(BuiltGrid grid, const Ghosts& ghosts)
{
    const auto& points = dynamic_cast<const PointSet<D>&>(*grid.domain);
    const auto* const cells = dynamic_cast<const CellComplex*>(grid.domain.get());
    const std::size_t numCells = cells == nullptr ? 0 : cells->numCells();
    const auto isIn = [](const std::vector<bool>& list, std::size_t index)
    { return !list.empty() && list[index]; };

    std::vector<bool> isUsed(points.numPoints(), false);
    std::vector<bool> isLost(points.numPoints(), false);
    std::vector<std::size_t> left;
    std::vector<std::size_t> cellOrigin;
    for (std::size_t index = 0; index < numCells; ++index)
    {
        const std::size_t origin = grid.cellOrigin ? (*grid.cellOrigin)[index] : index;
        const Cell cell = cells->cell(index);
        const bool isKept = !isIn(ghosts.removedCells, origin) &&
                            std::ranges::none_of(cell.pointIndices(), [&](std::size_t point)
                                                 { return isIn(ghosts.removedPoints, point); });
        for (const std::size_t point : cell.pointIndices())
            (isKept ? isUsed : isLost)[point] = true;
        if (!isKept)
            continue;
        left.push_back(index);
        cellOrigin.push_back(origin);
    }

    std::vector<std::int64_t> newIndex(points.numPoints(), -1);
    std::vector<typename PointSet<D>::Point> newPoints;
    std::vector<std::size_t> pointOrigin;
    for (std::size_t point = 0; point < points.numPoints(); ++point)
    {
        const bool isUnneeded = isLost[point] || isIn(ghosts.duplicatePoints, point);
        if (isIn(ghosts.removedPoints, point) || (isUnneeded && !isUsed[point]))
            continue;
        newIndex[point] = static_cast<std::int64_t>(newPoints.size());
        newPoints.push_back(points.point(point));
        pointOrigin.push_back(point);
    }
    if (left.size() == numCells && newPoints.size() == points.numPoints())
        return grid;
    BuiltGrid result;
    result.warnings = std::move(grid.warnings);
    using Indices = const std::vector<std::size_t>;
    result.pointOrigin = std::make_shared<Indices>(std::move(pointOrigin));
    result.cellOrigin = std::make_shared<Indices>(std::move(cellOrigin));

    std::vector<CellType> types;
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    for (const std::size_t index : left)
    {
        const Cell cell = cells->cell(index);
        types.push_back(cell.type());
        for (const std::size_t point : cell.pointIndices())
            connectivity.push_back(newIndex[point]);
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
    }
    auto array = std::make_shared<const DefaultValueArray<typename PointSet<D>::Point>>(
        std::move(newPoints), Precision::Float64);
    if (types.empty())
        result.domain = std::make_shared<const PointCloud<D>>(std::move(array));
    else
        result.domain = std::make_shared<const UnstructuredGrid<D>>(
            std::move(array), CellTable{std::move(types), IndexArray(std::move(offsets)),
                                        IndexArray(std::move(connectivity))});
    return result;
}

}

BuiltGrid buildGrid(DataFile& file, std::optional<std::size_t> dimension,
                    const volatile bool& abortFlag)
{
    BuiltGrid grid = file.structuring == StructuringType::Uniform ? buildUniform(file, dimension)
                     : file.structuring == StructuringType::Rectilinear
                         ? buildRectilinear(file, dimension)
                         : buildWithPoints(file, dimension, abortFlag);
    const Ghosts ghosts(file);
    if (ghosts.isEmpty())
        return grid;
    const std::size_t chosen = dynamic_cast<const PointSetBase&>(*grid.domain).dimension();
    return visitDimension(chosen, [&]<std::size_t D>()
                          { return withoutGhosts<D>(std::move(grid), ghosts); });
}

}
