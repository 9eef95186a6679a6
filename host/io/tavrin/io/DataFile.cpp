#include <tavrin/io/DataFile.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/io/Malformed.hpp>

#include <vtkDataSetAttributes.h>

#include <algorithm>
#include <cmath>

namespace tavrin::io
{

namespace
{

/// More than memory can hold values for, and so small that no product of counts overflows.
constexpr std::size_t maximumPoints = std::size_t{1} << 40;

}

std::unique_ptr<DataFile> DataFile::openStep(std::size_t) const
{
    throw logic_error("the format has no steps");
}

GridSize DataFile::size() const
{
    return sizeOf(extent);
}

void DataFile::setExtent(const Extent& newExtent)
{
    extent = newExtent;
    numPoints = numPointsOf(size());
    numCells = numCellsOf(size());
}

void DataFile::setTime(const StoredArray& number)
{
    visitPrecision(number.precision,
                   [&]<typename Stored>()
                   {
                       const auto value = static_cast<double>(*number.as<Stored>());
                       if (std::isfinite(value))
                           time = value;
                   });
}

void DataFile::addArray(Array array)
{
    const auto [known, isNew] =
        mArrayIndices.try_emplace({array.association, array.name}, arrays.size());
    if (isNew)
        arrays.push_back(std::move(array));
    else
        arrays[known->second] = std::move(array);
}

GridSize sizeOf(const DataFile::Extent& extent)
{
    constexpr std::int64_t farthest = std::int64_t{1} << 40;
    GridSize size;
    std::size_t points = 1;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const std::int64_t first = extent[2 * axis];
        const std::int64_t last = extent[2 * axis + 1];
        if (first < -farthest || last > farthest || last < first - 1)
            throw Malformed("the extent " + std::to_string(first) + " to " + std::to_string(last) +
                            " of axis " + std::to_string(axis) + " is reversed or too large");
        size[axis] = static_cast<std::size_t>(last - first + 1);
        if (size[axis] > maximumPoints / std::max<std::size_t>(points, 1))
            throw Malformed("the extents give more points than can be handled");
        points *= size[axis];
    }
    return points == 0 ? GridSize{0, 0, 0} : size;
}

std::size_t numPointsOf(const GridSize& size)
{
    return size[0] * size[1] * size[2];
}

std::size_t numCellsOf(const GridSize& size)
{
    std::size_t cells = 1;
    for (const std::size_t points : size)
        cells *= points > 1 ? points - 1 : points;
    return cells;
}

std::optional<DataFile::GhostBits> ghostBitsOf(const std::string& name, Association association)
{
    const bool isOnPoints = association == Association::Points;
    using Attributes = vtkDataSetAttributes;
    if (name == Attributes::GhostArrayName())
        return isOnPoints
                   ? DataFile::GhostBits{Attributes::HIDDENPOINT, Attributes::DUPLICATEPOINT}
                   : DataFile::GhostBits{Attributes::DUPLICATECELL | Attributes::HIDDENCELL, 0};
    // Older files hold the distance of a ghost from the elements that are not ghosts.
    if (name == "vtkGhostLevels")
        return isOnPoints ? DataFile::GhostBits{0, 255} : DataFile::GhostBits{255, 0};
    return std::nullopt;
}

}
