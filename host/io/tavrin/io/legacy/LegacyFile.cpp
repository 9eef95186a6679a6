#include <tavrin/io/legacy/LegacyFile.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/legacy/LegacyLayout.hpp>

#include <vtkCellType.h>

#include <algorithm>

namespace tavrin::io
{

namespace
{

/// Reads the format itself: VTK's reader leaves arrays uninitialized where a file ends early, does not
/// read NaN from text, and trusts the counts that a file declares.
class LegacyFile : public DataFile
{
public:
    LegacyFile(InputFile file, const volatile bool& abortFlag);

    StoredArray readArray(const Array& array) override;
    std::optional<Marks> readMarks(Association association) override;
    StoredArray readPoints() override;
    Coordinates readCoordinates(std::size_t axis) override;
    FileCells readCells() override;

private:
    void requireDeclared(Association association) const;
    FileCells readList(const LegacyLayout::CellList& list);
    FileCells readCounted(const LegacyLayout::CellList& list);

    LegacyNumbers mNumbers;
    LegacyLayout mLayout;
};

LegacyFile::LegacyFile(InputFile file, const volatile bool& abortFlag)
    : mNumbers(std::move(file), abortFlag), mLayout(readLegacyLayout(mNumbers))
{
    format = mLayout.format;
    structuring = mLayout.structuring;
    origin = mLayout.origin;
    spacing = mLayout.spacing;
    if (mLayout.extent)
        setExtent(*mLayout.extent);
    if (structuring == StructuringType::Unstructured)
    {
        numPoints = mLayout.points ? mLayout.points->tuples : 0;
        numCells = 0;
        for (const LegacyLayout::CellList& list : mLayout.cellLists)
            numCells += list.cells;
    }
    requireDeclared(Association::Points);
    requireDeclared(Association::Cells);
    for (const LegacyLayout::NamedArray& named : mLayout.arrays)
        if (!ghostBitsOf(named.array.name, named.array.association))
            addArray(named.array);
    if (mLayout.time)
        setTime(mNumbers.read(*mLayout.time));
}

void LegacyFile::requireDeclared(Association association) const
{
    const auto& declared = mLayout.declared[static_cast<std::size_t>(association)];
    if (declared && *declared != numElements(association))
        throw Malformed("has values for " + std::to_string(*declared) + " " +
                        std::string(nameOf(association)) + " and " +
                        std::to_string(numElements(association)) + " " +
                        std::string(nameOf(association)));
}

StoredArray LegacyFile::readArray(const Array& array)
{
    const auto found = std::ranges::find_if(mLayout.arrays.rbegin(), mLayout.arrays.rend(),
                                            [&](const LegacyLayout::NamedArray& named) {
                                                return named.array.name == array.name &&
                                                       named.array.association == array.association;
                                            });
    StoredArray values = mNumbers.read(found->place);
    if (!found->isColor)
        return values;
    // Text files hold colors as fractions of 1, all other files as bytes.
    auto bytes = StoredArray::allocate(Precision::UInt8, values.tuples, values.components);
    for (std::size_t i = 0; i < values.numbers(); ++i)
    {
        // With 0 as its first argument, the maximum is 0 for NaN.
        const float scaled = std::max(0.0F, 255.0F * values.as<float>()[i] + 0.5F);
        bytes.as<std::uint8_t>()[i] = static_cast<std::uint8_t>(std::min(scaled, 255.0F));
    }
    return bytes;
}

std::optional<DataFile::Marks> LegacyFile::readMarks(Association association)
{
    for (const LegacyLayout::NamedArray& named : mLayout.arrays)
        if (const auto bits = ghostBitsOf(named.array.name, association);
            bits && named.array.association == association)
            return Marks{mNumbers.read(named.place), *bits};
    return std::nullopt;
}

StoredArray LegacyFile::readPoints()
{
    if (!mLayout.points)
        throw Malformed("POINTS is missing");
    if (mLayout.points->tuples != numPoints)
        throw Malformed("has " + std::to_string(mLayout.points->tuples) +
                        " points where its dimensions need " + std::to_string(numPoints));
    return mNumbers.read(*mLayout.points);
}

DataFile::Coordinates LegacyFile::readCoordinates(std::size_t axis)
{
    const auto& place = mLayout.coordinates[axis];
    if (!place || place->tuples != size()[axis])
        throw Malformed("the coordinates of axis " + std::to_string(axis) +
                        " are missing or do not match its dimensions");
    const StoredArray stored = mNumbers.read(*place);
    Coordinates result{std::vector<double>(stored.tuples), stored.precision};
    visitPrecision(stored.precision,
                   [&]<typename Stored>()
                   {
                       for (std::size_t i = 0; i < stored.tuples; ++i)
                           result.values[i] = static_cast<double>(stored.as<Stored>()[i]);
                   });
    return result;
}

/// Splits "3 a b c 2 d e" into offsets 0 3 5 and connectivity a b c d e.
FileCells LegacyFile::readCounted(const LegacyLayout::CellList& list)
{
    const StoredArray numbers = mNumbers.read(list.connectivity);
    const std::span<const std::int32_t> all(numbers.as<std::int32_t>(), numbers.tuples);
    std::vector<std::int64_t> offsets{0};
    offsets.reserve(list.cells + 1);
    auto* const packed = numbers.as<std::int32_t>();
    std::size_t next = 0;
    std::size_t end = 0;
    for (std::size_t cell = 0; cell < list.cells; ++cell)
    {
        const std::int64_t count = next < all.size() ? all[next] : -1;
        if (count < 0 || static_cast<std::size_t>(count) > all.size() - next - 1)
            throw Malformed("cell " + std::to_string(cell) + " of " + std::to_string(list.cells) +
                            " leaves the list of cells");
        ++next;
        for (std::int64_t i = 0; i < count; ++i)
            packed[end++] = all[next++];
        offsets.push_back(static_cast<std::int64_t>(end));
    }
    FileCells cells;
    cells.offsets = IndexArray(std::move(offsets));
    cells.connectivity = IndexArray(std::span<const std::int32_t>(packed, end), numbers.owner);
    return cells;
}

FileCells LegacyFile::readList(const LegacyLayout::CellList& list)
{
    if (list.isCounted)
        return readCounted(list);
    FileCells cells;
    if (list.cells > 0)
    {
        cells.offsets = toIndices(mNumbers.read(list.offsets));
        cells.connectivity = toIndices(mNumbers.read(list.connectivity));
    }
    return cells;
}

FileCells LegacyFile::readCells()
{
    // The cell data has this order, whatever the order of the lists is.
    std::ranges::stable_sort(mLayout.cellLists, {}, &LegacyLayout::CellList::poly);
    CellCollector collector;
    FileCells result;
    for (const LegacyLayout::CellList& list : mLayout.cellLists)
    {
        FileCells cells = readList(list);
        if (list.poly)
            for (std::size_t cell = 0; cell < list.cells; ++cell)
                result.types.push_back(vtkTypeOf(
                    *list.poly,
                    static_cast<std::size_t>(cells.offsets[cell + 1] - cells.offsets[cell])));
        collector.add(std::move(cells.offsets), std::move(cells.connectivity), 0);
    }
    result.offsets = collector.offsets();
    result.connectivity = collector.connectivity();
    if (mLayout.isPolyData)
        return result;

    const LegacyLayout::Place types = mLayout.cellTypes.value_or(LegacyLayout::Place{});
    if (types.tuples != numCells)
        throw Malformed("has " + std::to_string(types.tuples) + " cell types for " +
                        std::to_string(numCells) + " cells");
    if (numCells == 0)
        return result;
    appendTypes(result.types, mNumbers.read(types));
    // A polyhedron lists its faces where other cells list their vertices.
    if (std::ranges::find(result.types, VTK_POLYHEDRON) != result.types.end())
    {
        result.faces = result.connectivity;
        for (std::size_t cell = 0; cell < numCells; ++cell)
            result.faceStarts.push_back(result.offsets[cell]);
    }
    return result;
}

}

std::unique_ptr<DataFile> openLegacyFile(const FileFormat&, InputFile file,
                                         const volatile bool& abortFlag)
{
    return std::make_unique<LegacyFile>(std::move(file), abortFlag);
}

}
