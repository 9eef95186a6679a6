#include <tavrin/io/FileCells.hpp>

#include <vtkCellType.h>

#include <limits>

namespace tavrin::io
{

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
    // An invalid index must stay invalid: shifted, it could become a valid one of another part, or
    // overflow.
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
    std::vector<std::int64_t> allOffsets{0};
    std::vector<std::int64_t> allConnectivity;
    for (const Part& part : mParts)
    {
        const auto base = static_cast<std::int64_t>(allConnectivity.size());
        std::visit(
            [&](const auto& indices)
            {
                const auto available = static_cast<std::int64_t>(part.connectivity.size());
                for (const std::int64_t offset : indices.subspan(1))
                    allOffsets.push_back(offset < 0 || offset > available ? -1 : base + offset);
            },
            part.offsets.storage());
        std::visit(
            [&](const auto& indices)
            {
                const auto shift = static_cast<std::int64_t>(part.firstPoint);
                for (const std::int64_t index : indices)
                    allConnectivity.push_back(index < 0 || index > last - shift ? -1
                                                                                : index + shift);
            },
            part.connectivity.storage());
    }
    mParts.assign(1,
                  {IndexArray(std::move(allOffsets)), IndexArray(std::move(allConnectivity)), 0});
}

std::uint8_t vtkTypeOf(PolyList list, std::size_t numVertices)
{
    switch (list)
    {
    case PolyList::Vertices:
        return numVertices == 1 ? VTK_VERTEX : VTK_POLY_VERTEX;
    case PolyList::Lines:
        return numVertices == 2 ? VTK_LINE : VTK_POLY_LINE;
    case PolyList::Polygons:
        return numVertices == 3 ? VTK_TRIANGLE : numVertices == 4 ? VTK_QUAD : VTK_POLYGON;
    case PolyList::Strips:
        break;
    }
    return numVertices == 3 ? VTK_TRIANGLE : VTK_TRIANGLE_STRIP;
}

void appendTypes(std::vector<std::uint8_t>& types, const StoredArray& numbers)
{
    types.reserve(types.size() + numbers.tuples);
    visitPrecision(numbers.precision,
                   [&]<typename Stored>()
                   {
                       for (std::size_t i = 0; i < numbers.tuples; ++i)
                       {
                           const auto type = static_cast<double>(numbers.as<Stored>()[i]);
                           types.push_back(type >= 0 && type < 256 ? static_cast<std::uint8_t>(type)
                                                                   : std::uint8_t{255});
                       }
                   });
}

}
