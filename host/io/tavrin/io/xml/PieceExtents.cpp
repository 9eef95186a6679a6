#include <tavrin/io/xml/PieceExtents.hpp>

#include <tavrin/io/Malformed.hpp>

#include <algorithm>
#include <cstring>

namespace tavrin::io
{

namespace
{

using Extent = DataFile::Extent;

/// Whether two of the boxes, which are parts of a whole, have cells in common. Sorted along an axis,
/// a box is compared with those that begin before it ends. The axis is the one with the fewest such
/// pairs: along another one, all boxes might begin together.
bool doOverlap(std::vector<Extent> boxes, const Extent& whole)
{
    const auto overlap = [&](const Extent& a, const Extent& b, std::size_t axis)
    {
        return whole[2 * axis] == whole[2 * axis + 1] ||
               std::max(a[2 * axis], b[2 * axis]) < std::min(a[2 * axis + 1], b[2 * axis + 1]);
    };
    const auto sortAlong = [&](std::size_t axis)
    { std::ranges::sort(boxes, {}, [axis](const Extent& box) { return box[2 * axis]; }); };
    const auto countPairs = [&](std::size_t axis)
    {
        sortAlong(axis);
        std::size_t pairs = 0;
        for (auto box = boxes.begin(); box != boxes.end(); ++box)
            pairs += static_cast<std::size_t>(
                std::partition_point(box, boxes.end(),
                                     [&](const Extent& other)
                                     { return other[2 * axis] < (*box)[2 * axis + 1]; }) -
                box);
        return pairs;
    };
    std::array<std::size_t, 3> pairs{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        pairs[axis] =
            whole[2 * axis] == whole[2 * axis + 1] ? boxes.size() * boxes.size() : countPairs(axis);
    const auto best = static_cast<std::size_t>(std::ranges::min_element(pairs) - pairs.begin());
    sortAlong(best);
    for (auto a = boxes.begin(); a != boxes.end(); ++a)
        for (auto b = a + 1; b != boxes.end() && overlap(*a, *b, best); ++b)
            if (overlap(*a, *b, 0) && overlap(*a, *b, 1) && overlap(*a, *b, 2))
                return true;
    return false;
}

}

void requireCover(const std::vector<Extent>& pieces, const Extent& whole)
{
    std::size_t cells = 0;
    for (const Extent& piece : pieces)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const auto [first, last] = std::pair(piece[2 * axis], piece[2 * axis + 1]);
            if (first < whole[2 * axis] || last > whole[2 * axis + 1])
                throw Malformed("a piece leaves the whole extent");
            if (first == last && whole[2 * axis] != whole[2 * axis + 1])
                throw Malformed("a piece is flat where the whole is not");
        }
        cells += numCellsOf(sizeOf(piece));
    }
    // Pieces without a common cell that have as many cells as the whole cover it.
    if (doOverlap(pieces, whole))
        throw Malformed("its pieces overlap");
    if (const std::size_t needed = numCellsOf(sizeOf(whole)); cells != needed)
        throw Malformed("its pieces have " + std::to_string(cells) + " cells, the whole has " +
                        std::to_string(needed));
}

GridSize countsOf(const Extent& extent, Association association)
{
    GridSize counts = sizeOf(extent);
    for (std::size_t& count : counts)
        if (association == Association::Cells && count > 1)
            --count;
    return counts;
}

void copyIntoWhole(const StoredArray& part, const Extent& piece, const StoredArray& all,
                   const Extent& whole, Association association)
{
    const std::size_t tupleBytes = part.bytesPerTuple();
    const GridSize partCounts = countsOf(piece, association);
    const GridSize allCounts = countsOf(whole, association);
    GridSize first;
    for (std::size_t axis = 0; axis < 3; ++axis)
        first[axis] = static_cast<std::size_t>(piece[2 * axis] - whole[2 * axis]);
    for (std::size_t k = 0; k < partCounts[2]; ++k)
        for (std::size_t j = 0; j < partCounts[1]; ++j)
        {
            const std::size_t source = (k * partCounts[1] + j) * partCounts[0];
            const std::size_t target =
                ((first[2] + k) * allCounts[1] + first[1] + j) * allCounts[0] + first[0];
            std::memcpy(all.data + target * tupleBytes, part.data + source * tupleBytes,
                        partCounts[0] * tupleBytes);
        }
}

}
