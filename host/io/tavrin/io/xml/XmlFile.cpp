#include <tavrin/io/xml/XmlFile.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/io/xml/PieceExtents.hpp>
#include <tavrin/io/xml/XmlCells.hpp>
#include <tavrin/io/xml/XmlElements.hpp>
#include <tavrin/io/xml/XmlValues.hpp>

#include <cmath>
#include <cstring>

namespace tavrin::io
{

namespace
{

/// Throws `Malformed` unless the file holds the data set of the format.
void requireDataSet(vtkXMLDataElement& root, const FileFormat& format)
{
    const std::string dataSet = XmlValues::attribute(root, "type").value_or("");
    if (dataSet == format.dataSet)
        return;
    std::vector<std::string> supported;
    for (const FileFormat& other : fileFormats())
    {
        if (other.family != format.family)
            continue;
        if (other.dataSet == dataSet)
            throw Malformed("holds " + dataSet + ", whose extension is " +
                            std::string(other.extension));
        if (other.open != nullptr)
            supported.emplace_back(other.dataSet);
    }
    throw Malformed("holds \"" + dataSet + "\", which is not supported; supported are " +
                    enumerate(supported, "and"));
}

constexpr const char* sectionOf(Association association)
{
    return association == Association::Points ? "PointData" : "CellData";
}

class XmlFile : public DataFile
{
public:
    XmlFile(const FileFormat& fileFormat, InputFile file, const volatile bool& abortFlag);

    StoredArray readArray(const Array& array) override;
    std::optional<Marks> readMarks(Association association) override;
    StoredArray readPoints() override;
    Coordinates readCoordinates(std::size_t axis) override;
    FileCells readCells() override;

private:
    struct Piece
    {
        vtkXMLDataElement* element;
        Extent extent;
        std::size_t points;
        std::size_t cells;
    };

    bool isStructured() const { return structuring != StructuringType::Unstructured; }
    void readLayout();
    void readPieces();
    void readStructuredPieces();
    void listArrays();
    void readTime();
    /// Reads an array from all pieces that have elements of the association; `section` returns the
    /// array of a piece.
    template<typename Section>
    StoredArray readFromPieces(Association association, Precision precision, std::size_t components,
                               const Section& section);
    StoredArray readNamed(Association association, const std::string& name, Precision precision,
                          std::size_t components);
    XmlValues mValues;
    vtkXMLDataElement* mGrid = nullptr;
    bool mIsPolyData = false;
    /// The pieces that have points.
    std::vector<Piece> mPieces;
    vtkXMLDataElement* mFirstPiece = nullptr;
    /// The arrays that mark ghosts among points and cells, with the bits of their marks.
    std::array<std::optional<std::pair<Array, GhostBits>>, 2> mMarks;
};

XmlFile::XmlFile(const FileFormat& fileFormat, InputFile file, const volatile bool& abortFlag)
    : mValues(std::move(file), abortFlag)
{
    requireDataSet(mValues.root(), fileFormat);
    format = fileFormat.name;
    structuring = fileFormat.grids.front();
    mIsPolyData = fileFormat.dataSet == "PolyData";
    const std::string dataSet(fileFormat.dataSet);
    mGrid = child(mValues.root(), dataSet.c_str());
    if (mGrid == nullptr)
        throw Malformed("the element " + dataSet + " is missing");
    if (const auto times = XmlValues::attribute(*mGrid, "TimeValues");
        times && times->find_first_of(" \t\n", times->find_first_not_of(" \t\n")) <
                     times->find_last_not_of(" \t\n"))
        throw Malformed("holds several time steps in one file, which is not supported; write a "
                        "file for each and list them in a .pvd file");
    readPieces();
    if (isStructured())
        readLayout();
    listArrays();
    readTime();
}

DataFile::Extent toExtent(const std::string& text)
{
    const auto numbers = parseIntegers(text, 6, "an extent");
    DataFile::Extent extent;
    std::ranges::copy(numbers, extent.begin());
    return extent;
}

void XmlFile::readPieces()
{
    forChildren(mGrid, "Piece",
                [&](vtkXMLDataElement& element)
                {
                    Piece piece{&element, {}, 0, 0};
                    if (isStructured())
                    {
                        piece.extent =
                            toExtent(XmlValues::attribute(element, "Extent").value_or(""));
                        const GridSize size = sizeOf(piece.extent);
                        piece.points = numPointsOf(size);
                        piece.cells = numCellsOf(size);
                    }
                    else
                    {
                        piece.points = XmlValues::countAttribute(element, "NumberOfPoints");
                        piece.cells = XmlCells::countOf(element, mIsPolyData);
                    }
                    if (mFirstPiece == nullptr)
                        mFirstPiece = &element;
                    if (piece.points > 0)
                        mPieces.push_back(piece);
                    else if (piece.cells > 0)
                        throw Malformed("a piece has cells but no points");
                });
    if (isStructured())
        readStructuredPieces();
    else
        for (const Piece& piece : mPieces)
        {
            numPoints += piece.points;
            numCells += piece.cells;
        }
}

void XmlFile::readStructuredPieces()
{
    // A single piece of a larger grid is read as a grid of its own.
    if (mPieces.size() == 1)
        return setExtent(mPieces.front().extent);
    if (mPieces.empty())
        return;
    setExtent(toExtent(XmlValues::attribute(*mGrid, "WholeExtent").value_or("")));
    std::vector<Extent> extents;
    extents.reserve(mPieces.size());
    for (const Piece& piece : mPieces)
        extents.push_back(piece.extent);
    requireCover(extents, extent);
}

void XmlFile::readLayout()
{
    if (structuring != StructuringType::Uniform)
        return;
    if (const auto text = XmlValues::attribute(*mGrid, "Origin"))
        std::ranges::copy(parseNumbers(*text, 3, "Origin"), origin.begin());
    if (const auto text = XmlValues::attribute(*mGrid, "Spacing"))
        std::ranges::copy(parseNumbers(*text, 3, "Spacing"), spacing.begin());
    if (const auto text = XmlValues::attribute(*mGrid, "Direction"))
        std::ranges::copy(parseNumbers(*text, 9, "Direction"), direction.begin());
}

void XmlFile::listArrays()
{
    if (mFirstPiece == nullptr)
        return;
    for (const Association association : {Association::Points, Association::Cells})
    {
        // A piece without elements may not list its arrays.
        const auto hasElements = [&](const Piece& piece)
        { return (association == Association::Points ? piece.points : piece.cells) > 0; };
        const auto piece = std::ranges::find_if(mPieces, hasElements);
        forChildren(
            child(piece == mPieces.end() ? *mFirstPiece : *piece->element, sectionOf(association)),
            "DataArray",
            [&](vtkXMLDataElement& element)
            {
                const auto precision = XmlValues::precisionOf(element);
                const auto name = XmlValues::attribute(element, "Name");
                if (!precision || !name)
                    return;
                Array array{*name, association, *precision, XmlValues::componentsOf(element), {}};
                // No array with more components is a field.
                for (std::size_t i = 0; i < std::min<std::size_t>(array.components, 375); ++i)
                    array.componentNames.push_back(
                        XmlValues::attribute(element, ("ComponentName" + std::to_string(i)).c_str())
                            .value_or(""));
                if (const auto bits = ghostBitsOf(*name, association))
                    mMarks[static_cast<std::size_t>(association)] = {array, *bits};
                else
                    addArray(std::move(array));
            });
    }
}

void XmlFile::readTime()
{
    vtkXMLDataElement* const array = findArray(child(*mGrid, "FieldData"), "TimeValue");
    if (array == nullptr || !XmlValues::precisionOf(*array) ||
        XmlValues::countAttribute(*array, "NumberOfTuples") > 1)
        return;
    setTime(mValues.read(*array, 1, 1));
}

template<typename Section>
StoredArray XmlFile::readFromPieces(Association association, Precision precision,
                                    std::size_t components, const Section& section)
{
    const bool ofPoints = association == Association::Points;
    std::vector<std::pair<const Piece*, vtkXMLDataElement*>> parts;
    for (const Piece& piece : mPieces)
    {
        const std::size_t elements = ofPoints ? piece.points : piece.cells;
        if (elements == 0)
            continue;
        vtkXMLDataElement& array = section(piece);
        if (XmlValues::precisionOf(array) != precision ||
            XmlValues::componentsOf(array) != components)
            throw Malformed("the pieces of the file hold different kinds of one array");
        if (components > (std::size_t{1} << 20))
            throw Malformed("an array has " + std::to_string(components) + " components");
        mValues.require(array, elements * components);
        parts.emplace_back(&piece, &array);
    }
    StoredArray result = StoredArray::allocate(precision, numElements(association), components);
    const std::size_t tupleBytes = result.bytesPerTuple();
    if (!isStructured() || parts.size() <= 1)
    {
        StoredArray part = result;
        for (const auto& [piece, array] : parts)
        {
            part.tuples = ofPoints ? piece->points : piece->cells;
            mValues.read(*array, part);
            part.data += part.tuples * tupleBytes;
        }
        return result;
    }
    std::memset(result.data, 0, result.tuples * tupleBytes);
    for (const auto& [piece, array] : parts)
    {
        const GridSize counts = countsOf(piece->extent, association);
        const StoredArray part =
            StoredArray::allocate(precision, counts[0] * counts[1] * counts[2], components);
        mValues.read(*array, part);
        copyIntoWhole(part, piece->extent, result, extent, association);
    }
    return result;
}

StoredArray XmlFile::readNamed(Association association, const std::string& name,
                               Precision precision, std::size_t components)
{
    return readFromPieces(association, precision, components,
                          [&](const Piece& piece) -> vtkXMLDataElement&
                          {
                              const char* const section = sectionOf(association);
                              return requireArray(child(*piece.element, section), name, section);
                          });
}

StoredArray XmlFile::readArray(const Array& array)
{
    return readNamed(array.association, array.name, array.precision, array.components);
}

std::optional<DataFile::Marks> XmlFile::readMarks(Association association)
{
    const auto& marks = mMarks[static_cast<std::size_t>(association)];
    if (!marks)
        return std::nullopt;
    const Array& array = marks->first;
    return Marks{readNamed(association, array.name, array.precision, array.components),
                 marks->second};
}

StoredArray XmlFile::readPoints()
{
    if (mPieces.empty())
        return StoredArray::allocate(Precision::Float64, 0, 3);
    const auto precision = XmlValues::precisionOf(onlyArray(*mPieces.front().element, "Points"));
    if (!precision)
        throw Malformed("the points have no type of number");
    return readFromPieces(Association::Points, *precision, 3,
                          [](const Piece& piece) -> vtkXMLDataElement&
                          { return onlyArray(*piece.element, "Points"); });
}

DataFile::Coordinates XmlFile::readCoordinates(std::size_t axis)
{
    const std::size_t count = size()[axis];
    Coordinates result{std::vector<double>(count)};
    std::vector<bool> isGiven(count, false);
    for (const Piece& piece : mPieces)
    {
        std::vector<vtkXMLDataElement*> axes;
        forChildren(child(*piece.element, "Coordinates"), "DataArray",
                    [&](vtkXMLDataElement& array) { axes.push_back(&array); });
        if (axes.size() != 3)
            throw Malformed("a piece has " + std::to_string(axes.size()) +
                            " arrays of coordinates, not 3");
        const auto first = static_cast<std::size_t>(piece.extent[2 * axis] - extent[2 * axis]);
        const StoredArray part = mValues.read(*axes[axis], sizeOf(piece.extent)[axis], 1);
        if (part.precision == Precision::Float32)
            result.precision = Precision::Float32;
        visitPrecision(part.precision,
                       [&]<typename Stored>()
                       {
                           for (std::size_t i = 0; i < part.tuples; ++i)
                           {
                               result.values[first + i] = static_cast<double>(part.as<Stored>()[i]);
                               isGiven[first + i] = true;
                           }
                       });
    }
    if (std::ranges::find(isGiven, false) != isGiven.end())
        throw Malformed("its pieces do not give all coordinates");
    return result;
}

FileCells XmlFile::readCells()
{
    XmlCells cells(mValues, mIsPolyData);
    for (const Piece& piece : mPieces)
        cells.add(*piece.element, piece.points);
    return cells.take();
}

}

std::unique_ptr<DataFile> openXmlFile(const FileFormat& format, InputFile file,
                                      const volatile bool& abortFlag)
{
    return std::make_unique<XmlFile>(format, std::move(file), abortFlag);
}

}
