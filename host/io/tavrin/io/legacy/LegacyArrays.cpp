#include <tavrin/io/legacy/LegacyParser.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/io/XmlText.hpp>

#include <algorithm>
#include <cctype>

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
