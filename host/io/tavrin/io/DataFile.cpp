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

}
