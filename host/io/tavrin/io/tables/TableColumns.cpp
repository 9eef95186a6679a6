#include <tavrin/io/tables/TableColumns.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/io/series/Blocks.hpp>

#include <algorithm>
#include <map>

namespace tavrin::io
{

namespace
{

using Names = std::vector<std::string>;

/// A name such as "Velocity (m/s)" without its unit, and the unit.
std::pair<std::string, std::string> splitUnit(const std::string& name)
{
    const std::size_t bracket = name.find_last_of("([");
    const bool hasUnit =
        bracket != std::string::npos && bracket > 0 && (name.ends_with(')') || name.ends_with(']'));
    if (!hasUnit)
        return {name, ""};
    const std::size_t end = name.find_last_not_of(' ', bracket - 1) + 1;
    return {name.substr(0, end), name.substr(end)};
}

std::optional<std::size_t> findColumn(const Names& names, const std::string& wanted)
{
    const auto found = std::ranges::find_if(names, [&](const std::string& name)
                                            { return toLower(splitUnit(name).first) == wanted; });
    return found == names.end() ? std::nullopt
                                : std::optional(static_cast<std::size_t>(found - names.begin()));
}

std::array<std::optional<std::size_t>, 3> findCoordinates(const Names& names)
{
    // The clearest convention comes first: a table may have an array "position" beside x, y and z.
    static const std::vector<std::array<std::string, 3>> conventions{
        {"x", "y", "z"},
        {"points:0", "points:1", "points:2"},
        {"points_0", "points_1", "points_2"},
        {"points_x", "points_y", "points_z"},
        {"coordinates:0", "coordinates:1", "coordinates:2"},
        {"coord_x", "coord_y", "coord_z"},
        {"x_coord", "y_coord", "z_coord"},
        {"x coordinate", "y coordinate", "z coordinate"},
        {"x-coordinate", "y-coordinate", "z-coordinate"},
        {"position_x", "position_y", "position_z"},
        {"pos_x", "pos_y", "pos_z"},
    };
    for (const auto& convention : conventions)
        if (findColumn(names, convention.front()))
        {
            std::array<std::optional<std::size_t>, 3> columns;
            std::ranges::transform(convention, columns.begin(),
                                   [&](const std::string& name)
                                   { return findColumn(names, name); });
            return columns;
        }
    Names quoted;
    for (const std::string& name : names)
        quoted.push_back('"' + name + '"');
    throw Malformed(
        "has no coordinates: a column x, X (m) or Points:0 is needed; its columns are " +
        shortList(quoted));
}

/// A column that may be a component.
struct Component
{
    std::size_t column;
    /// The name of the array.
    std::string array;
    /// Stands between the name of the array and the suffix.
    char separator;
    /// "x", "yz", "0".
    std::string suffix;
};

/// Splits "velocity_x", "velocity:0" and "velocity_x (m/s)".
std::optional<Component> splitComponent(std::size_t column, const std::string& name)
{
    const auto [plain, unit] = splitUnit(name);
    const std::size_t separator = plain.find_last_of("_:");
    if (separator == std::string::npos || separator == 0)
        return std::nullopt;
    const std::string suffix = toLower(plain.substr(separator + 1));
    const bool isNumbered = parseIndex(suffix).has_value();
    const bool isNamed = !suffix.empty() && suffix.size() <= 2 &&
                         suffix.find_first_not_of("xyzw") == std::string::npos;
    if (!isNumbered && !isNamed)
        return std::nullopt;
    return Component{column, plain.substr(0, separator) + unit, plain[separator], suffix};
}

/// Every way to name the components of one array. The last ones are for any number of components.
std::vector<Names> componentNames(std::size_t count)
{
    std::vector<Names> all;
    const Names axes{"x", "y", "z", "w"};
    if (count >= 2 && count <= axes.size())
        all.emplace_back(axes.begin(), axes.begin() + static_cast<std::ptrdiff_t>(count));
    for (const Shape& shape : {Shape{1, 1}, Shape{2, 2}, Shape{3, 3}, Shape{4, 4}})
        if (sizeOf(shape) == count)
            all.push_back(componentNamesOf(shape));
    if (count == symmetricTuple)
        all.emplace_back(vtkOrder.begin(), vtkOrder.end());
    Names numbers;
    for (std::size_t i = 0; i < count; ++i)
        numbers.push_back(std::to_string(i));
    all.push_back(std::move(numbers));
    return all;
}

/// The array that all the components make; nothing where some are missing.
std::optional<TableColumns::Array> joinComponents(const std::vector<Component>& components)
{
    // A scalar may be called "velocity_x" or "T_0".
    if (components.size() == 1 && components.front().separator == '_')
        return std::nullopt;
    for (const Names& names : componentNames(components.size()))
    {
        TableColumns::Array array{components.front().array, {}, {}};
        for (const std::string& name : names)
            if (const auto found = std::ranges::find(components, name, &Component::suffix);
                found != components.end())
                array.columns.push_back(found->column);
        if (array.columns.size() < names.size())
            continue;
        // Numbered components have no names, except that a single one is a vector and no scalar.
        const bool isNumbered = names.front() == "0";
        array.componentNames = !isNumbered         ? names
                               : names.size() == 1 ? componentNamesOf(Shape{1})
                                                   : Names(names.size());
        return array;
    }
    return std::nullopt;
}

std::vector<TableColumns::Array> findArrays(const Names& names, const std::vector<bool>& isTaken)
{
    const auto arrayOf = [](const Component& component)
    { return std::pair(component.array, component.separator); };
    std::map<std::pair<std::string, char>, std::vector<Component>> components;
    for (std::size_t column = 0; column < names.size(); ++column)
        if (!isTaken[column])
            if (auto component = splitComponent(column, names[column]))
                components[arrayOf(*component)].push_back(std::move(*component));

    // Arrays are in the order of their first columns.
    std::vector<TableColumns::Array> arrays;
    std::vector<bool> isJoined = isTaken;
    for (std::size_t column = 0; column < names.size(); ++column)
    {
        if (isJoined[column] || names[column].empty())
            continue;
        std::optional<TableColumns::Array> array;
        if (const auto component = splitComponent(column, names[column]))
            array = joinComponents(components[arrayOf(*component)]);
        arrays.push_back(array ? *array : TableColumns::Array{names[column], {column}, {""}});
        for (const std::size_t joined : arrays.back().columns)
            isJoined[joined] = true;
    }
    return arrays;
}

}

TableColumns findColumns(const std::vector<std::string>& names)
{
    TableColumns columns;
    columns.coordinates = findCoordinates(names);
    std::vector<bool> isTaken(names.size(), false);
    const auto take = [&](const std::optional<std::size_t>& column)
    {
        if (column)
            isTaken[*column] = true;
    };
    for (const auto& column : columns.coordinates)
        take(column);
    columns.time = findColumn(names, "time");
    // The first column of a name is found; tavrin writes the mask last.
    Names reversed(names.rbegin(), names.rend());
    if (const auto column = findColumn(reversed, "valid"))
        columns.validity = names.size() - 1 - *column;
    const auto others = static_cast<std::size_t>(std::ranges::count(isTaken, false)) -
                        (columns.time ? 1 : 0) - (columns.validity ? 1 : 0);
    // An array may be called "time" or "valid". Times are written before the coordinates.
    const bool hasTimesInFront = columns.time && *columns.time < *columns.coordinates.front();
    if (others == 0 && columns.validity && (!columns.time || hasTimesInFront))
        columns.validity.reset();
    else if (others == 0)
        columns.time.reset();
    take(columns.time);
    take(columns.validity);
    columns.arrays = findArrays(names, isTaken);
    return columns;
}

std::vector<std::string> columnNamesFor(const std::string& array,
                                        const std::vector<std::size_t>& shape)
{
    if (shape.empty())
        return {array};
    // Single columns are vectors or matrices only with this separator.
    const char separator = sizeOf(shape) == 1 ? ':' : '_';
    Names names =
        shape.size() == 2 ? componentNamesOf(shape) : componentNames(shape.front()).front();
    if (shape == Shape{1})
        names = {"0"};
    for (std::string& name : names)
        name.insert(0, array + separator);
    return names;
}

bool isCoordinate(const std::string& name)
{
    const std::string plain = toLower(splitUnit(name).first);
    return plain == "x" || plain == "y" || plain == "z";
}

}
