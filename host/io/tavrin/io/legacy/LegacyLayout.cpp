#include <tavrin/io/legacy/LegacyLayout.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/io/XmlText.hpp>

#include <algorithm>
#include <cctype>
#include <map>

namespace tavrin::io
{

namespace
{

/// Decodes a name, in which blanks and the like are written as %20. Names are UTF-8 from here on.
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
    return toUtf8(name);
}

/// A kind of data set, with the name that follows DATASET.
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

/// The list of polygonal data with this keyword; nothing for the list of an unstructured grid.
std::optional<PolyList> polyListOf(std::string_view keyword)
{
    constexpr std::array<std::string_view, 4> keywords{"vertices", "lines", "polygons",
                                                       "triangle_strips"};
    const auto found = std::ranges::find(keywords, keyword);
    if (found == keywords.end())
        return std::nullopt;
    return static_cast<PolyList>(found - keywords.begin());
}

class LegacyParser
{
public:
    explicit LegacyParser(LegacyNumbers& numbers) : mNumbers(numbers) {}

    LegacyLayout parse();

private:
    using Place = LegacyNumbers::Place;
    using CellList = LegacyLayout::CellList;

    using Handler = void (LegacyParser::*)(const std::string& keyword);
    static const std::map<std::string, Handler, std::less<>>& handlers();

    void readHeader();
    std::size_t declaredTuples(const std::string& keyword) const;
    void addNamed(const std::string& name, const std::string& typeName, std::size_t tuples,
                  std::size_t components, bool isColor = false);

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

    LegacyNumbers& mNumbers;
    LegacyLayout mLayout;
    int mMajorVersion = 0;
    /// The association of the arrays that follow.
    std::optional<Association> mSection;
    /// The array that a METADATA block would describe.
    std::optional<std::size_t> mLastNamed;
    std::size_t mLastComponents = 0;
};

const std::map<std::string, LegacyParser::Handler, std::less<>>& LegacyParser::handlers()
{
    static const std::map<std::string, Handler, std::less<>> all{
        {"dimensions", &LegacyParser::onDimensions},
        {"extent", &LegacyParser::onExtent},
        {"origin", &LegacyParser::onOrigin},
        {"spacing", &LegacyParser::onSpacing},
        {"aspect_ratio", &LegacyParser::onSpacing},
        {"points", &LegacyParser::onPoints},
        {"x_coordinates", &LegacyParser::onCoordinates},
        {"y_coordinates", &LegacyParser::onCoordinates},
        {"z_coordinates", &LegacyParser::onCoordinates},
        {"cells", &LegacyParser::onCells},
        {"vertices", &LegacyParser::onCells},
        {"lines", &LegacyParser::onCells},
        {"polygons", &LegacyParser::onCells},
        {"triangle_strips", &LegacyParser::onCells},
        {"cell_types", &LegacyParser::onCellTypes},
        {"point_data", &LegacyParser::onPointData},
        {"cell_data", &LegacyParser::onCellData},
        {"field", &LegacyParser::onField},
        {"scalars", &LegacyParser::onScalars},
        {"color_scalars", &LegacyParser::onColorScalars},
        {"vectors", &LegacyParser::onFixedSize},
        {"normals", &LegacyParser::onFixedSize},
        {"tensors", &LegacyParser::onFixedSize},
        {"tensors6", &LegacyParser::onFixedSize},
        {"global_ids", &LegacyParser::onFixedSize},
        {"pedigree_ids", &LegacyParser::onFixedSize},
        {"edge_flags", &LegacyParser::onFixedSize},
        {"texture_coordinates", &LegacyParser::onTextureCoordinates},
        {"lookup_table", &LegacyParser::onLookupTable},
        {"metadata", &LegacyParser::onMetadata},
    };
    return all;
}

LegacyLayout LegacyParser::parse()
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
    return std::move(mLayout);
}

void LegacyParser::readHeader()
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
    const std::string name = toLower(mNumbers.requireWord("the kind of data set"));
    const auto* const kind = std::ranges::find(kinds, name, &Kind::name);
    if (kind == kinds.end())
        throw Malformed("holds a data set of an unsupported kind; supported are STRUCTURED_POINTS, "
                        "RECTILINEAR_GRID, STRUCTURED_GRID, UNSTRUCTURED_GRID and POLYDATA");
    mLayout.format = kind->format;
    mLayout.structuring = kind->structuring;
    mLayout.isPolyData = name == "polydata";
}

std::size_t LegacyParser::declaredTuples(const std::string& keyword) const
{
    if (!mSection)
        throw Malformed(keyword + " stands before POINT_DATA or CELL_DATA");
    return *mLayout.declared[static_cast<std::size_t>(*mSection)];
}

void LegacyParser::addNamed(const std::string& name, const std::string& typeName,
                            std::size_t tuples, std::size_t components, bool isColor)
{
    mLastNamed.reset();
    mLastComponents = components;
    if (components > maximumComponents)
        throw Malformed("the array \"" + name + "\" has " + std::to_string(components) +
                        " components");
    const std::string type = toLower(typeName);
    if (type == "bit")
        return mNumbers.skipBits(tuples * components);
    if (type == "string" || type == "utf8_string")
        return mNumbers.skipTexts(tuples * components);
    const Place place = mNumbers.skipNumbers(type, tuples, components);
    if (!mSection)
    {
        if (name == "TimeValue" && place.tuples * place.components == 1)
            mLayout.time = place;
        return;
    }
    if (tuples != mLayout.declared[static_cast<std::size_t>(*mSection)])
        throw Malformed("the array \"" + name + "\" has " + std::to_string(tuples) +
                        " values for " +
                        std::to_string(*mLayout.declared[static_cast<std::size_t>(*mSection)]) +
                        " " + std::string(nameOf(*mSection)));
    mLastNamed = mLayout.arrays.size();
    mLayout.arrays.push_back(
        {{name, *mSection, isColor ? Precision::UInt8 : place.precision, components, {}},
         place,
         isColor});
}

void LegacyParser::onDimensions(const std::string&)
{
    DataFile::Extent extent{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        extent[2 * axis] = 0;
        extent[2 * axis + 1] = static_cast<std::int64_t>(mNumbers.requireCount("a dimension")) - 1;
    }
    mLayout.extent = extent;
}

void LegacyParser::onExtent(const std::string&)
{
    DataFile::Extent extent{};
    for (std::int64_t& index : extent)
        index = mNumbers.requireInteger("an extent");
    mLayout.extent = extent;
}

void LegacyParser::onOrigin(const std::string&)
{
    for (double& coordinate : mLayout.origin)
        coordinate = mNumbers.requireNumber("ORIGIN");
}

void LegacyParser::onSpacing(const std::string&)
{
    for (double& distance : mLayout.spacing)
        distance = mNumbers.requireNumber("SPACING");
}

void LegacyParser::onPoints(const std::string&)
{
    const std::size_t count = mNumbers.requireCount("the number of points");
    mLayout.points = mNumbers.skipNumbers(mNumbers.requireWord("the type of the points"), count, 3);
    mLastNamed.reset();
    mLastComponents = 3;
}

void LegacyParser::onCoordinates(const std::string& keyword)
{
    const std::size_t count = mNumbers.requireCount("the number of coordinates");
    const auto axis = static_cast<std::size_t>(keyword.front() - 'x');
    mLayout.coordinates[axis] =
        mNumbers.skipNumbers(mNumbers.requireWord("the type of the coordinates"), count, 1);
    mLastNamed.reset();
    mLastComponents = 1;
}

void LegacyParser::onCells(const std::string& keyword)
{
    CellList list;
    list.poly = polyListOf(keyword);
    if (list.poly.has_value() != mLayout.isPolyData)
        throw Malformed(keyword + " stands in a data set of another kind");
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
    mLayout.cellLists.push_back(list);
}

void LegacyParser::onCellTypes(const std::string&)
{
    mLayout.cellTypes =
        mNumbers.skipNumbers("int", mNumbers.requireCount("the number of cell types"), 1);
}

void LegacyParser::onPointData(const std::string&)
{
    mSection = Association::Points;
    mLayout.declared[0] = mNumbers.requireCount("the number of POINT_DATA");
}

void LegacyParser::onCellData(const std::string&)
{
    mSection = Association::Cells;
    mLayout.declared[1] = mNumbers.requireCount("the number of CELL_DATA");
}

void LegacyParser::onField(const std::string&)
{
    mNumbers.requireWord("the name of a field");
    const std::size_t count = mNumbers.requireCount("the number of arrays of a field");
    for (std::size_t i = 0; i < count; ++i)
    {
        std::string name = mNumbers.requireWord("the name of an array");
        // A block that describes the previous array.
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

void LegacyParser::onScalars(const std::string& keyword)
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
        throw Malformed("LOOKUP_TABLE is missing after SCALARS");
    mNumbers.requireWord("the name of a LOOKUP_TABLE");
    addNamed(name, type, declaredTuples(keyword), components);
}

void LegacyParser::onColorScalars(const std::string& keyword)
{
    const std::string name = decodeName(mNumbers.requireWord("the name of COLOR_SCALARS"));
    const std::size_t components = mNumbers.requireCount("the number of components");
    addNamed(name, mNumbers.isBinary() ? "unsigned_char" : "float", declaredTuples(keyword),
             components, !mNumbers.isBinary());
}

void LegacyParser::onFixedSize(const std::string& keyword)
{
    const std::size_t components = keyword == "tensors"                           ? 9
                                   : keyword == "tensors6"                        ? 6
                                   : keyword == "vectors" || keyword == "normals" ? 3
                                                                                  : 1;
    const std::string name = decodeName(mNumbers.requireWord("the name of an array"));
    const std::string type = mNumbers.requireWord("the type of an array");
    addNamed(name, type, declaredTuples(keyword), components);
}

void LegacyParser::onTextureCoordinates(const std::string& keyword)
{
    const std::string name = decodeName(mNumbers.requireWord("the name of TEXTURE_COORDINATES"));
    const std::size_t components = mNumbers.requireCount("the number of components");
    const std::string type = mNumbers.requireWord("the type of TEXTURE_COORDINATES");
    addNamed(name, type, declaredTuples(keyword), components);
}

void LegacyParser::onLookupTable(const std::string&)
{
    mNumbers.requireWord("the name of a LOOKUP_TABLE");
    mNumbers.skipNumbers(mNumbers.isBinary() ? "unsigned_char" : "float",
                         mNumbers.requireCount("the size of a LOOKUP_TABLE"), 4);
}

void LegacyParser::onMetadata(const std::string&)
{
    mNumbers.nextLine();
    while (const auto line = mNumbers.nextLine())
    {
        // An empty line ends the block.
        if (line->empty())
            return;
        if (toLower(*line) != "component_names")
            continue;
        for (std::size_t i = 0; i < mLastComponents; ++i)
        {
            const auto name = mNumbers.nextLine();
            if (!name)
                return;
            if (mLastNamed)
                mLayout.arrays[*mLastNamed].array.componentNames.push_back(decodeName(*name));
        }
    }
}

}

LegacyLayout readLegacyLayout(LegacyNumbers& numbers)
{
    return LegacyParser(numbers).parse();
}

}
