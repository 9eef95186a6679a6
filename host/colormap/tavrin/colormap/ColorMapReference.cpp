#include <tavrin/colormap/ColorMapReference.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/colormap/BuiltInColorMaps.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>

namespace tavrin
{

namespace
{

constexpr std::string_view fileExtension = ".json";

/// Throws `usage_error` with the text and the reason.
ValueRange parseRange(const std::string& text)
{
    const auto complain = [&](const std::string& reason)
    { throw usage_error("the range of values \"@" + text + "\" " + reason); };
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos)
        complain("is not of the form @LOW:HIGH");
    const auto bound = [&](const std::string& number)
    {
        try
        {
            return lexicalCast<double>(number);
        }
        catch (const bad_lexical_cast& error)
        {
            complain(std::string("is not of the form @LOW:HIGH: ") + error.what());
        }
        return 0.0;
    };
    const ValueRange range{bound(text.substr(0, colon)), bound(text.substr(colon + 1))};
    if (range.low >= range.high)
        complain("does not ascend; LOW must be less than HIGH");
    if (!range.isProper())
        complain("is not finite");
    return range;
}

/// The position of the '@' of the range, or the end of the text. A '@' in the name of a file does not
/// begin a range.
std::size_t startOfRange(const std::string& text)
{
    const std::size_t at = text.rfind('@');
    const std::size_t extension = text.rfind(fileExtension);
    const bool isInName = extension != std::string::npos && at < extension;
    return at == std::string::npos || isInName ? text.size() : at;
}

ValueRange properRange(const ValueRange& values)
{
    if (values.isProper())
        return values;
    const double middle = values.low;
    if (values.low != values.high || middle == 0.0)
        return {};
    const ValueRange around{std::min(0.0, 2.0 * middle), std::max(0.0, 2.0 * middle)};
    return around.isProper() ? around : ValueRange{};
}

}

ColorMapReference ColorMapReference::parse(const std::string& text)
{
    ColorMapReference reference;
    const std::size_t end = startOfRange(text);
    if (end < text.size())
        reference.range = parseRange(text.substr(end + 1));
    const std::string source = text.substr(0, end);
    const std::size_t extension = source.rfind(fileExtension);
    if (extension == std::string::npos)
    {
        if (source.find('/') != std::string::npos)
            throw usage_error("color map \"" + source + "\": a file of color maps ends in " +
                              std::string(fileExtension));
        const auto& names = builtInColorMapNames();
        if (std::ranges::find(names, source) == names.end())
            throw usage_error("unknown color map \"" + source + "\"" +
                              suggestionFor(source, names));
        reference.name = source;
        return reference;
    }
    const std::size_t endOfFile = extension + fileExtension.size();
    reference.file = source.substr(0, endOfFile);
    if (endOfFile == source.size())
        return reference;
    if (source[endOfFile] != '#')
        throw usage_error("color map \"" + source +
                          "\" is not of the form FILE.json[#NAME][@LOW:HIGH]");
    reference.name = source.substr(endOfFile + 1);
    return reference;
}

ColorMap ColorMapReference::load() const
{
    if (file.empty())
        return builtInColorMap(name);
    const auto maps = readColorMapFile(file);
    if (name.empty() && maps.size() == 1)
        return maps.front();
    const auto found = std::ranges::find(maps, name, &ColorMap::name);
    if (!name.empty() && found != maps.end())
        return *found;
    std::vector<std::string> names;
    std::ranges::transform(maps, std::back_inserter(names), &ColorMap::name);
    throw usage_error(file.string() + ": " +
                      (name.empty()
                           ? std::to_string(maps.size()) + " color maps; name one as FILE#NAME"
                           : "no color map \"" + name + "\"") +
                      suggestionFor(name, names));
}

std::shared_ptr<const ColorMapDataObject> ColorMapReference::loadFor(const ValueRange& values) const
{
    return std::make_shared<const ColorMapDataObject>(load().stretchedTo(properRange(values)));
}

}
