#include <tavrin/io/DataFile.hpp>

#include <tavrin/io/Malformed.hpp>

#include <vtkDataSetAttributes.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tavrin::io
{

namespace
{

/// Beyond what memory can hold values for, and small enough that no product of counts overflows.
constexpr std::size_t mostPoints = std::size_t{1} << 40;

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
                            " of axis " + std::to_string(axis) + " is out of reach");
        size[axis] = static_cast<std::size_t>(last - first + 1);
        if (size[axis] > mostPoints / std::max<std::size_t>(points, 1))
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

std::string extensionOf(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char character)
                           { return static_cast<char>(std::tolower(character)); });
    return extension;
}

std::optional<std::uint8_t> ghostMask(const std::string& name, Association association)
{
    if (name == vtkDataSetAttributes::GhostArrayName())
        return association == Association::Points
                   ? std::uint8_t{vtkDataSetAttributes::DUPLICATEPOINT |
                                  vtkDataSetAttributes::HIDDENPOINT}
                   : std::uint8_t{vtkDataSetAttributes::DUPLICATECELL |
                                  vtkDataSetAttributes::HIDDENCELL};
    // What older files hold in its place: the distance from the part that is no ghost.
    if (name == "vtkGhostLevels")
        return std::uint8_t{255};
    return std::nullopt;
}

void CellCollector::add(IndexArray offsets, IndexArray connectivity, std::size_t firstPoint)
{
    if (offsets.size() > 1)
        mParts.push_back({std::move(offsets), std::move(connectivity), firstPoint});
}

IndexArray CellCollector::offsets()
{
    merge();
    return mParts.front().offsets;
}

IndexArray CellCollector::connectivity()
{
    merge();
    return mParts.front().connectivity;
}

void CellCollector::merge()
{
    if (mParts.size() == 1 && mParts.front().firstPoint == 0)
        return;
    std::vector<std::int64_t> allOffsets{0};
    std::vector<std::int64_t> allConnectivity;
    for (const Part& part : mParts)
    {
        const auto base = static_cast<std::int64_t>(allConnectivity.size());
        std::visit(
            [&](const auto& indices)
            {
                for (const std::int64_t offset : indices.subspan(1))
                    allOffsets.push_back(base + offset);
            },
            part.offsets.storage());
        std::visit(
            [&](const auto& indices)
            {
                // A wrong index stays wrong: it must not become one of another part.
                const auto shift = static_cast<std::int64_t>(part.firstPoint);
                for (const std::int64_t index : indices)
                    allConnectivity.push_back(index < 0 ? -1 : index + shift);
            },
            part.connectivity.storage());
    }
    mParts.assign(1,
                  {IndexArray(std::move(allOffsets)), IndexArray(std::move(allConnectivity)), 0});
}

}
