#include <tavrin/colormap/ColorMapFile.hpp>

#include <tavrin/base/Suggestion.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace tavrin
{

namespace
{

using Json = nlohmann::json;

/// The largest size in bytes of a file that is read. Files of color maps are far smaller.
constexpr std::uintmax_t largestFile = std::uintmax_t{16} << 20;

/// Components in a file may leave 0..1 by this much, because of rounding.
constexpr double componentTolerance = 1e-3;

/// Throws the cause of a failure, to which the caller adds the file.
[[noreturn]] void refuse(const std::string& cause)
{
    throw runtime_error(cause);
}

std::string readText(const std::filesystem::path& file)
{
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
        refuse("no such file");
    if (std::filesystem::is_directory(status))
        refuse("is a folder");
    if (!std::filesystem::is_regular_file(status))
        refuse("is not a regular file");
    if (std::filesystem::file_size(file, error) > largestFile)
        refuse("is too large for a file of color maps (over 16 MiB)");
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (!stream || !(text << stream.rdbuf()))
        refuse(errno == 0 ? "is empty" : std::string("cannot be read: ") + std::strerror(errno));
    return text.str();
}

Json parseText(const std::string& text)
{
    try
    {
        return Json::parse(text);
    }
    catch (const Json::parse_error& error)
    {
        const std::size_t end = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
        const std::string before = text.substr(0, end);
        const auto line = std::ranges::count(before, '\n') + 1;
        const std::size_t column = end - (before.rfind('\n') + 1) + 1;
        refuse("is not valid JSON at line " + std::to_string(line) + ", column " +
               std::to_string(column));
    }
    catch (const Json::exception&)
    {
        refuse("is not valid JSON: it has a number that is too large");
    }
}

/// Reads one map. Its messages name the member that is wrong.
class MapReader
{
public:
    MapReader(const Json& object, const std::string& defaultName)
        : mObject(object), mDefaultName(defaultName)
    {
    }

    ColorMap read() const
    {
        if (!mObject.is_object())
            refuse("is not an object");
        if (isSet("UseLogScale"))
            refuse("\"UseLogScale\" is set; logarithmic color maps are not offered");
        ColorMap::Definition definition{.name = text("Name", mDefaultName),
                                        .space = colorSpace(),
                                        .points = controlPoints(),
                                        .below = {},
                                        .above = {}};
        if (mObject.contains("NanColor"))
            definition.notANumber = color("NanColor");
        if (isSet("UseBelowRangeColor"))
            definition.below = color("BelowRangeColor");
        if (isSet("UseAboveRangeColor"))
            definition.above = color("AboveRangeColor");
        return ColorMap(std::move(definition));
    }

private:
    bool isSet(const char* member) const
    {
        const auto found = mObject.find(member);
        return found != mObject.end() && ((found->is_boolean() && found->get<bool>()) ||
                                          (found->is_number() && found->get<double>() != 0.0));
    }

    std::string text(const char* member, const std::string& absent) const
    {
        const auto found = mObject.find(member);
        if (found == mObject.end())
            return absent;
        if (!found->is_string())
            refuse("\"" + std::string(member) + "\" is not a text");
        return found->get<std::string>();
    }

    ColorSpace colorSpace() const
    {
        static const std::array<std::string, 6> names{"RGB",    "HSV",       "Lab",
                                                      "CIELAB", "Diverging", "Step"};
        static constexpr std::array spaces{ColorSpace::Rgb,       ColorSpace::Hsv,
                                           ColorSpace::Lab,       ColorSpace::Lab,
                                           ColorSpace::Diverging, ColorSpace::Step};
        const std::string name = text("ColorSpace", "RGB");
        const auto found = std::ranges::find(names, name);
        if (found == names.end())
            refuse("unknown \"ColorSpace\" \"" + name + "\"" + suggestionFor(name, names));
        return spaces[static_cast<std::size_t>(found - names.begin())];
    }

    /// The numbers of an array member.
    std::vector<double> numbers(const std::string& member) const
    {
        const auto found = mObject.find(member);
        if (found == mObject.end())
            refuse("\"" + member + "\" is missing");
        if (!found->is_array())
            refuse("\"" + member + "\" is not an array");
        std::vector<double> values;
        for (const Json& element : *found)
        {
            if (!element.is_number())
                refuse("\"" + member + "\"[" + std::to_string(values.size()) + "] is not a number");
            values.push_back(element.get<double>());
        }
        return values;
    }

    static Color colorFrom(const double* components)
    {
        const auto component = [&](std::size_t i)
        {
            const double nearest = std::clamp(components[i], 0.0, 1.0);
            return static_cast<float>(
                std::abs(components[i] - nearest) <= componentTolerance ? nearest : components[i]);
        };
        return {component(0), component(1), component(2), 1.0F};
    }

    Color color(const std::string& member) const
    {
        const auto values = numbers(member);
        if (values.size() != 3)
            refuse("\"" + member + "\" has " + std::to_string(values.size()) +
                   " numbers instead of 3");
        return colorFrom(values.data());
    }

    std::vector<ColorMap::ControlPoint> controlPoints() const
    {
        if (!mObject.contains("RGBPoints") && mObject.contains("IndexedColors"))
            refuse("has \"IndexedColors\" but no \"RGBPoints\"; color maps for categories are not "
                   "offered");
        const auto values = numbers("RGBPoints");
        if (values.size() % 4 != 0)
            refuse("\"RGBPoints\" has " + std::to_string(values.size()) +
                   " numbers, which are not groups of x, r, g, b");
        std::vector<ColorMap::ControlPoint> points;
        for (std::size_t i = 0; i < values.size(); i += 4)
            points.push_back({values[i], colorFrom(&values[i + 1])});
        return points;
    }

    const Json& mObject;
    const std::string& mDefaultName;
};

std::vector<ColorMap> readMaps(const std::filesystem::path& file)
{
    const Json root = parseText(readText(file));
    const std::string defaultName = file.stem().string();
    if (!root.is_array())
        return {MapReader(root, defaultName).read()};
    if (root.empty())
        refuse("has no color map");
    std::vector<ColorMap> maps;
    for (const Json& object : root)
    {
        try
        {
            maps.push_back(MapReader(object, defaultName).read());
        }
        catch (const runtime_error& error)
        {
            refuse("color map " + std::to_string(maps.size()) + ": " + error.what());
        }
    }
    return maps;
}

}

std::vector<ColorMap> readColorMapFile(const std::filesystem::path& file)
{
    try
    {
        return readMaps(file);
    }
    catch (const runtime_error& error)
    {
        throw ColorMapFileError(file, error.what());
    }
}

}
