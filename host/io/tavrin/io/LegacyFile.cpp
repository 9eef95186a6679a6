#include <tavrin/io/DataFile.hpp>

#include <tavrin/io/LegacyNumbers.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <vtkCellType.h>

#include <algorithm>
#include <cctype>
#include <map>

namespace tavrin::io
{

namespace
{

/// Names are written with %20 for a blank and the like.
std::string decodeName(std::string_view text)
{
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        int code = 0;
        const bool isCode = text[i] == '%' && i + 2 < text.size() &&
                            std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
                            std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0;
        if (isCode)
        {
            code = std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16);
            i += 2;
        }
        name += isCode ? static_cast<char>(code) : text[i];
    }
    return name;
}

/// The kinds of data set of the format, as they are named after DATASET.
struct Kind
{
    std::string_view name;
    std::string_view format;
    StructuringType structuring;
};

constexpr std::array kinds{
    Kind{"structured_points", "legacy VTK structured points", StructuringType::Uniform},
    Kind{"rectilinear_grid", "legacy VTK rectilinear grid", StructuringType::Rectilinear},
    Kind{"structured_grid", "legacy VTK structured grid", StructuringType::Curvilinear},
    Kind{"unstructured_grid", "legacy VTK unstructured grid", StructuringType::Unstructured},
    Kind{"polydata", "legacy VTK polygonal data", StructuringType::Unstructured},
};

/// The format without an XML around it. VTK's reader of it keeps what it finds in memory where a
/// file ends early, takes no NaN from text, and believes the counts that a file declares; so the
/// format, which is a sequence of keywords and arrays, is read here.
///
/// Opening goes through the whole file but only notes where the arrays are.
class LegacyFile : public DataFile
{
public:
    LegacyFile(const std::filesystem::path& path, const volatile bool& abortFlag);

    StoredArray readArray(const Array& array) override;
    std::optional<Marks> readMarks(Association association) override;
    StoredArray readPoints() override;
    StoredArray readCoordinates(std::size_t axis) override;
    FileCells readCells() override;

private:
    using Place = LegacyNumbers::Place;

    struct CellList
    {
        /// The number of vertices and the vertices, cell after cell; or, since version 5, offsets
        /// and connectivity.
        bool isCounted = false;
        std::size_t cells = 0;
        Place offsets;
        Place connectivity;
        std::string keyword;
    };

    using Handler = void (LegacyFile::*)(const std::string& keyword);
    static const std::map<std::string, Handler, std::less<>>& handlers();

    void readHeader();
    void addNamed(const std::string& name, const std::string& typeName, std::size_t tuples,
                  std::size_t components, bool isColor = false);
    FileCells readCounted(const CellList& list);

    void onDimensions(const std::string& keyword);
    void onExtent(const std::string& keyword);
    void onOrigin(const std::string& keyword);
    void onSpacing(const std::string& keyword);
    void onPoints(const std::string& keyword);
    void onCoordinates(const std::string& keyword);
    void onCells(const std::string& keyword);
    void onCellTypes(const std::string& keyword);
    void onPointData(const std::string& keyword);
    void onCellData(const std::string& keyword);
    void onField(const std::string& keyword);
    void onScalars(const std::string& keyword);
    void onColorScalars(const std::string& keyword);
    void onFixedSize(const std::string& keyword);
    void onTextureCoordinates(const std::string& keyword);
    void onLookupTable(const std::string& keyword);
    void onMetadata(const std::string& keyword);

    struct NamedPlace
    {
        Array array;
        Place place;
        bool isColor;
    };

    LegacyNumbers mNumbers;
    int mMajorVersion = 0;
    std::string mKind;
    std::optional<Place> mPoints;
    std::array<std::optional<Place>, 3> mCoordinates;
    std::vector<CellList> mCellLists;
    std::optional<Place> mCellTypes;
    /// What the arrays that follow belong to, and how many tuples its header declares.
    std::optional<Association> mSection;
    std::array<std::optional<std::size_t>, 2> mDeclared;
    std::vector<NamedPlace> mNamed;
    /// The array that a METADATA block belongs to.
    std::optional<std::size_t> mLastNamed;
    std::size_t mLastComponents = 0;
};

const std::map<std::string, LegacyFile::Handler, std::less<>>& LegacyFile::handlers()
{
    static const std::map<std::string, Handler, std::less<>> all{
        {"dimensions", &LegacyFile::onDimensions},
        {"extent", &LegacyFile::onExtent},
        {"origin", &LegacyFile::onOrigin},
        {"spacing", &LegacyFile::onSpacing},
        {"aspect_ratio", &LegacyFile::onSpacing},
        {"points", &LegacyFile::onPoints},
        {"x_coordinates", &LegacyFile::onCoordinates},
        {"y_coordinates", &LegacyFile::onCoordinates},
        {"z_coordinates", &LegacyFile::onCoordinates},
        {"cells", &LegacyFile::onCells},
        {"vertices", &LegacyFile::onCells},
        {"lines", &LegacyFile::onCells},
        {"polygons", &LegacyFile::onCells},
        {"triangle_strips", &LegacyFile::onCells},
        {"cell_types", &LegacyFile::onCellTypes},
        {"point_data", &LegacyFile::onPointData},
        {"cell_data", &LegacyFile::onCellData},
        {"field", &LegacyFile::onField},
        {"scalars", &LegacyFile::onScalars},
        {"color_scalars", &LegacyFile::onColorScalars},
        {"vectors", &LegacyFile::onFixedSize},
        {"normals", &LegacyFile::onFixedSize},
        {"tensors", &LegacyFile::onFixedSize},
        {"tensors6", &LegacyFile::onFixedSize},
        {"global_ids", &LegacyFile::onFixedSize},
        {"pedigree_ids", &LegacyFile::onFixedSize},
        {"edge_flags", &LegacyFile::onFixedSize},
        {"texture_coordinates", &LegacyFile::onTextureCoordinates},
        {"lookup_table", &LegacyFile::onLookupTable},
        {"metadata", &LegacyFile::onMetadata},
    };
    return all;
}

LegacyFile::LegacyFile(const std::filesystem::path& path, const volatile bool& abortFlag)
    : mNumbers(path, abortFlag)
{
    readHeader();
    while (const auto word = mNumbers.nextWord())
    {
        const std::string keyword = toLower(*word);
        const auto handler = handlers().find(keyword);
        if (handler == handlers().end())
            throw Malformed("an unknown keyword ends at byte " +
                            std::to_string(mNumbers.position()));
        (this->*handler->second)(keyword);
    }

    if (structuring == StructuringType::Unstructured)
    {
        numPoints = mPoints ? mPoints->tuples : 0;
        for (const CellList& list : mCellLists)
            numCells += list.cells;
    }
    for (const Association association : {Association::Points, Association::Cells})
    {
        const auto& declared = mDeclared[static_cast<std::size_t>(association)];
        if (declared && *declared != numElements(association))
            throw Malformed("has values for " + std::to_string(*declared) + " " +
                            std::string(nameOf(association)) + " and " +
                            std::to_string(numElements(association)) + " " +
                            std::string(nameOf(association)));
    }
    for (const NamedPlace& named : mNamed)
        if (!ghostMask(named.array.name, named.array.association))
            addArray(named.array);
}

void LegacyFile::readHeader()
{
    const std::string line = mNumbers.nextLine().value_or("");
    const std::string marker = "# vtk DataFile Version ";
    if (!line.starts_with(marker))
        throw Malformed("not a legacy VTK file");
    mMajorVersion = std::atoi(line.c_str() + marker.size());
    mNumbers.nextLine();
    const std::string encoding = toLower(mNumbers.requireWord("ASCII or BINARY"));
    if (encoding != "ascii" && encoding != "binary")
        throw Malformed("neither ASCII nor BINARY");
    mNumbers.setBinary(encoding == "binary");

    std::string word = toLower(mNumbers.requireWord("DATASET"));
    if (word == "field")
        throw Malformed("holds a field without a grid, which is not supported");
    if (word != "dataset")
        throw Malformed("DATASET is missing");
    mKind = toLower(mNumbers.requireWord("the kind of data set"));
    const auto* const kind = std::ranges::find(kinds, mKind, &Kind::name);
    if (kind == kinds.end())
        throw Malformed("holds a data set of an unsupported kind; supported are STRUCTURED_POINTS, "
                        "RECTILINEAR_GRID, STRUCTURED_GRID, UNSTRUCTURED_GRID and POLYDATA");
    format = kind->format;
    structuring = kind->structuring;
}

void LegacyFile::addNamed(const std::string& name, const std::string& typeName, std::size_t tuples,
                          std::size_t components, bool isColor)
{
    mLastNamed.reset();
    mLastComponents = components;
    const std::string type = toLower(typeName);
    if (type == "bit")
        return mNumbers.skipBits(tuples * components);
    if (type == "string" || type == "utf8_string")
        return mNumbers.skipTexts(tuples * components);
    const Place place = mNumbers.skipNumbers(type, tuples, components);
    if (!mSection)
    {
        if (name == "TimeValue" && place.tuples * place.components == 1)
            setTime(mNumbers.read(place));
        return;
    }
    if (tuples != mDeclared[static_cast<std::size_t>(*mSection)])
        throw Malformed("the array \"" + name + "\" has " + std::to_string(tuples) +
                        " values for " +
                        std::to_string(*mDeclared[static_cast<std::size_t>(*mSection)]) + " " +
                        std::string(nameOf(*mSection)));
    mLastNamed = mNamed.size();
    mNamed.push_back(
        {{name, *mSection, isColor ? Precision::UInt8 : place.precision, components, {}},
         place,
         isColor});
}

void LegacyFile::onDimensions(const std::string&)
{
    Extent newExtent;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        newExtent[2 * axis] = 0;
        newExtent[2 * axis + 1] =
            static_cast<std::int64_t>(mNumbers.requireCount("a dimension")) - 1;
    }
    setExtent(newExtent);
}

void LegacyFile::onExtent(const std::string&)
{
    Extent newExtent;
    for (std::int64_t& index : newExtent)
        index = mNumbers.requireInteger("an extent");
    setExtent(newExtent);
}

void LegacyFile::onOrigin(const std::string&)
{
    for (double& coordinate : origin)
        coordinate = mNumbers.requireNumber("ORIGIN");
}

void LegacyFile::onSpacing(const std::string&)
{
    for (double& distance : spacing)
        distance = mNumbers.requireNumber("SPACING");
}

void LegacyFile::onPoints(const std::string&)
{
    const std::size_t count = mNumbers.requireCount("the number of points");
    mPoints = mNumbers.skipNumbers(mNumbers.requireWord("the type of the points"), count, 3);
    mLastNamed.reset();
    mLastComponents = 3;
}

void LegacyFile::onCoordinates(const std::string& keyword)
{
    const std::size_t count = mNumbers.requireCount("the number of coordinates");
    const auto axis = static_cast<std::size_t>(keyword.front() - 'x');
    mCoordinates[axis] =
        mNumbers.skipNumbers(mNumbers.requireWord("the type of the coordinates"), count, 1);
    mLastNamed.reset();
    mLastComponents = 1;
}

void LegacyFile::onCells(const std::string& keyword)
{
    CellList list;
    list.keyword = keyword;
    const std::size_t first = mNumbers.requireCount("the number of cells");
    const std::size_t second = mNumbers.requireCount("the size of the cells");
    mLastNamed.reset();
    mLastComponents = 1;
    list.isCounted = mMajorVersion < 5;
    if (list.isCounted)
    {
        list.cells = first;
        if (first > second)
            throw Malformed(std::to_string(first) + " cells cannot be listed with " +
                            std::to_string(second) + " numbers");
        list.connectivity = mNumbers.skipNumbers("int", second, 1);
    }
    else if (first > 0)
    {
        list.cells = first - 1;
        if (toLower(mNumbers.requireWord("OFFSETS")) != "offsets")
            throw Malformed("OFFSETS is missing");
        list.offsets =
            mNumbers.skipNumbers(mNumbers.requireWord("the type of the offsets"), first, 1);
        if (toLower(mNumbers.requireWord("CONNECTIVITY")) != "connectivity")
            throw Malformed("CONNECTIVITY is missing");
        list.connectivity =
            mNumbers.skipNumbers(mNumbers.requireWord("the type of the connectivity"), second, 1);
    }
    mCellLists.push_back(std::move(list));
}

void LegacyFile::onCellTypes(const std::string&)
{
    mCellTypes = mNumbers.skipNumbers("int", mNumbers.requireCount("the number of cell types"), 1);
}

void LegacyFile::onPointData(const std::string&)
{
    mSection = Association::Points;
    mDeclared[0] = mNumbers.requireCount("the number of POINT_DATA");
}

void LegacyFile::onCellData(const std::string&)
{
    mSection = Association::Cells;
    mDeclared[1] = mNumbers.requireCount("the number of CELL_DATA");
}

void LegacyFile::onField(const std::string&)
{
    mNumbers.requireWord("the name of a field");
    const std::size_t count = mNumbers.requireCount("the number of arrays of a field");
    for (std::size_t i = 0; i < count; ++i)
    {
        std::string name = mNumbers.requireWord("the name of an array");
        // The block behind the array before.
        while (toLower(name) == "metadata")
        {
            onMetadata({});
            name = mNumbers.requireWord("the name of an array");
        }
        if (name == "NULL_ARRAY")
            continue;
        const std::size_t components = mNumbers.requireCount("the number of components");
        const std::size_t tuples = mNumbers.requireCount("the number of tuples");
        addNamed(decodeName(name), mNumbers.requireWord("the type of an array"), tuples,
                 components);
    }
}

void LegacyFile::onScalars(const std::string& keyword)
{
    const std::string name = decodeName(mNumbers.requireWord("the name of SCALARS"));
    const std::string type = mNumbers.requireWord("the type of SCALARS");
    std::string word = toLower(mNumbers.requireWord("LOOKUP_TABLE"));
    std::size_t components = 1;
    if (word != "lookup_table")
    {
        components = static_cast<std::size_t>(
            std::max<std::int64_t>(0, parseIntegers(word, 1, "the number of components").front()));
        word = toLower(mNumbers.requireWord("LOOKUP_TABLE"));
    }
    if (word != "lookup_table")
        throw Malformed("LOOKUP_TABLE is missing behind SCALARS");
    mNumbers.requireWord("the name of a LOOKUP_TABLE");
    if (!mSection)
        throw Malformed(keyword + " stands before POINT_DATA or CELL_DATA");
    addNamed(name, type, *mDeclared[static_cast<std::size_t>(*mSection)], components);
}

void LegacyFile::onColorScalars(const std::string& keyword)
{
    const std::string name = decodeName(mNumbers.requireWord("the name of COLOR_SCALARS"));
    const std::size_t components = mNumbers.requireCount("the number of components");
    if (!mSection)
        throw Malformed(keyword + " stands before POINT_DATA or CELL_DATA");
    addNamed(name, mNumbers.isBinary() ? "unsigned_char" : "float",
             *mDeclared[static_cast<std::size_t>(*mSection)], components, !mNumbers.isBinary());
}

void LegacyFile::onFixedSize(const std::string& keyword)
{
    const std::size_t components = keyword == "tensors"                           ? 9
                                   : keyword == "tensors6"                        ? 6
                                   : keyword == "vectors" || keyword == "normals" ? 3
                                                                                  : 1;
    const std::string name = decodeName(mNumbers.requireWord("the name of an array"));
    const std::string type = mNumbers.requireWord("the type of an array");
    if (!mSection)
        throw Malformed(keyword + " stands before POINT_DATA or CELL_DATA");
    addNamed(name, type, *mDeclared[static_cast<std::size_t>(*mSection)], components);
}

void LegacyFile::onTextureCoordinates(const std::string& keyword)
{
    const std::string name = decodeName(mNumbers.requireWord("the name of TEXTURE_COORDINATES"));
    const std::size_t components = mNumbers.requireCount("the number of components");
    const std::string type = mNumbers.requireWord("the type of TEXTURE_COORDINATES");
    if (!mSection)
        throw Malformed(keyword + " stands before POINT_DATA or CELL_DATA");
    addNamed(name, type, *mDeclared[static_cast<std::size_t>(*mSection)], components);
}

void LegacyFile::onLookupTable(const std::string&)
{
    mNumbers.requireWord("the name of a LOOKUP_TABLE");
    mNumbers.skipNumbers(mNumbers.isBinary() ? "unsigned_char" : "float",
                         mNumbers.requireCount("the size of a LOOKUP_TABLE"), 4);
}

void LegacyFile::onMetadata(const std::string&)
{
    mNumbers.nextLine();
    while (const auto line = mNumbers.nextLine())
    {
        // It ends with an empty line.
        if (line->empty())
            return;
        if (toLower(*line) != "component_names")
            continue;
        for (std::size_t i = 0; i < mLastComponents; ++i)
        {
            const auto name = mNumbers.nextLine();
            if (name && mLastNamed)
                mNamed[*mLastNamed].array.componentNames.push_back(decodeName(*name));
        }
    }
}

StoredArray LegacyFile::readArray(const Array& array)
{
    const auto found = std::ranges::find_if(mNamed.rbegin(), mNamed.rend(),
                                            [&](const NamedPlace& named) {
                                                return named.array.name == array.name &&
                                                       named.array.association == array.association;
                                            });
    StoredArray values = mNumbers.read(found->place);
    if (!found->isColor)
        return values;
    // Colours are shares of 1 in text, and bytes everywhere else.
    auto bytes = StoredArray::allocate(Precision::UInt8, values.tuples, values.components);
    for (std::size_t i = 0; i < values.numbers(); ++i)
        bytes.as<std::uint8_t>()[i] = static_cast<std::uint8_t>(
            std::clamp(255.0F * values.as<float>()[i] + 0.5F, 0.0F, 255.0F));
    return bytes;
}

std::optional<DataFile::Marks> LegacyFile::readMarks(Association association)
{
    for (const NamedPlace& named : mNamed)
        if (const auto mask = ghostMask(named.array.name, association);
            mask && named.array.association == association)
            return Marks{mNumbers.read(named.place), *mask};
    return std::nullopt;
}

StoredArray LegacyFile::readPoints()
{
    if (!mPoints)
        throw Malformed("POINTS is missing");
    if (mPoints->tuples != numPoints)
        throw Malformed("has " + std::to_string(mPoints->tuples) +
                        " points where its dimensions "
                        "need " +
                        std::to_string(numPoints));
    return mNumbers.read(*mPoints);
}

StoredArray LegacyFile::readCoordinates(std::size_t axis)
{
    const auto& place = mCoordinates[axis];
    if (!place || place->tuples != size()[axis])
        throw Malformed("the coordinates of axis " + std::to_string(axis) +
                        " are missing or not as many as its dimensions say");
    const StoredArray stored = mNumbers.read(*place);
    auto result = StoredArray::allocate(Precision::Float64, stored.tuples, 1);
    visitPrecision(stored.precision,
                   [&]<typename Stored>()
                   {
                       for (std::size_t i = 0; i < stored.tuples; ++i)
                           result.as<double>()[i] = static_cast<double>(stored.as<Stored>()[i]);
                   });
    return result;
}

/// Splits "3 a b c 2 d e" into offsets 0 3 5 and connectivity a b c d e.
FileCells LegacyFile::readCounted(const CellList& list)
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

std::uint8_t polyTypeOf(const std::string& keyword, std::size_t vertices)
{
    if (keyword == "vertices")
        return vertices == 1 ? VTK_VERTEX : VTK_POLY_VERTEX;
    if (keyword == "lines")
        return vertices == 2 ? VTK_LINE : VTK_POLY_LINE;
    if (keyword == "triangle_strips")
        return vertices == 3 ? VTK_TRIANGLE : VTK_TRIANGLE_STRIP;
    return vertices == 3 ? VTK_TRIANGLE : vertices == 4 ? VTK_QUAD : VTK_POLYGON;
}

FileCells LegacyFile::readCells()
{
    const bool isPolyData = mKind == "polydata";
    // The cell data come in this order, whatever that of the lists.
    static const std::vector<std::string> order{"cells", "vertices", "lines", "polygons",
                                                "triangle_strips"};
    std::ranges::stable_sort(mCellLists, {},
                             [](const CellList& list)
                             { return std::ranges::find(order, list.keyword) - order.begin(); });
    CellCollector collector;
    FileCells result;
    for (const CellList& list : mCellLists)
    {
        FileCells cells;
        if (list.isCounted)
        {
            cells = readCounted(list);
        }
        else if (list.cells > 0)
        {
            cells.offsets = toIndices(mNumbers.read(list.offsets));
            cells.connectivity = toIndices(mNumbers.read(list.connectivity));
        }
        if (isPolyData)
            for (std::size_t cell = 0; cell < list.cells; ++cell)
                result.types.push_back(polyTypeOf(
                    list.keyword,
                    static_cast<std::size_t>(cells.offsets[cell + 1] - cells.offsets[cell])));
        collector.add(std::move(cells.offsets), std::move(cells.connectivity), 0);
    }
    result.offsets = collector.offsets();
    result.connectivity = collector.connectivity();
    if (isPolyData)
        return result;

    if (mCellTypes.value_or(Place{}).tuples != numCells)
        throw Malformed("has " + std::to_string(mCellTypes.value_or(Place{}).tuples) +
                        " cell types for " + std::to_string(numCells) + " cells");
    if (numCells == 0)
        return result;
    const StoredArray types = mNumbers.read(*mCellTypes);
    for (std::size_t cell = 0; cell < numCells; ++cell)
    {
        const std::int32_t type = types.as<std::int32_t>()[cell];
        result.types.push_back(type >= 0 && type < 256 ? static_cast<std::uint8_t>(type)
                                                       : std::uint8_t{255});
    }
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

std::unique_ptr<DataFile> openLegacyFile(const std::filesystem::path& path,
                                         const volatile bool& abortFlag)
{
    return std::make_unique<LegacyFile>(path, abortFlag);
}

}
