#include <tavrin/io/legacy/LegacyParser.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace
{

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

}

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
            throw Malformed((startsLikeNumber(keyword)
                                 ? "an array has more numbers than it declares; the first of them "
                                   "ends at byte "
                                 : "an unknown keyword ends at byte ") +
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

LegacyLayout readLegacyLayout(LegacyNumbers& numbers)
{
    return LegacyParser(numbers).parse();
}

}
