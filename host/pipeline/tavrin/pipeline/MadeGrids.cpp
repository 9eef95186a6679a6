#include <tavrin/pipeline/MadeGrids.hpp>

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/base/Suggestion.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <charconv>
#include <cmath>

namespace tavrin::pipeline
{

namespace
{

using Position = MadeGrid::Position;
using Corners = MadeGrid::Corners;

constexpr const char* lineRule = "a line is @line:X,Y,Z:X,Y,Z:POINTS, as in @line:0,0,0:1,0,0:100";
constexpr const char* boxRule =
    "a box is @box:50x25x10 over the bounds of the other data, @box:50x25x10:FILE, or "
    "@box:50x25x10:X,Y,Z:X,Y,Z";

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    for (std::size_t first = 0; first <= text.size();)
    {
        const std::size_t end = std::min(text.find(separator, first), text.size());
        parts.push_back(text.substr(first, end - first));
        first = end + 1;
    }
    return parts;
}

/// One to three coordinates, so small that their differences are finite; those that are not given
/// are 0.
std::optional<Position> parsePosition(const std::string& text)
{
    const auto parts = split(text, ',');
    Position position{};
    if (parts.size() > position.size())
        return std::nullopt;
    try
    {
        std::ranges::transform(parts, position.begin(), lexicalCast<double>);
    }
    catch (const bad_lexical_cast&)
    {
        return std::nullopt;
    }
    const bool isValid =
        std::ranges::all_of(position, [](double x) { return std::abs(x) <= 1e300; });
    return isValid ? std::optional(position) : std::nullopt;
}

std::optional<std::size_t> parseCount(const std::string& text)
{
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && rest == end ? std::optional(count) : std::nullopt;
}

/// Throws `usage_error` unless the counts are positive and their product can be handled.
void requireCounts(const std::string& text, std::span<const std::size_t> counts)
{
    constexpr std::size_t maximumPoints = std::size_t{1} << 40;
    std::size_t product = 1;
    for (const std::size_t count : counts)
    {
        if (count == 0)
            throw usage_error(text + ": is an empty grid; a number of points is 1 or more");
        if (count > maximumPoints / product)
            throw usage_error(text + ": has more points than can be handled, which are 2^40");
        product *= count;
    }
}

MadeGrid::Line parseLine(const std::string& text, const std::string& content)
{
    const auto parts = split(content, ':');
    const auto from = parsePosition(parts.front());
    const auto to = parts.size() == 3 ? parsePosition(parts[1]) : std::nullopt;
    const auto points = parts.size() == 3 ? parseCount(parts[2]) : std::nullopt;
    if (!from || !to || !points)
        throw usage_error(text + ": " + lineRule);
    const std::array counts{*points};
    requireCounts(text, counts);
    if (*points == 1)
        throw usage_error(text + ": is an empty line grid; a line has 2 points or more");
    if (from == to)
        throw usage_error(text + ": is an empty line grid; its two ends are equal");
    return {*from, *to, *points};
}

MadeGrid::Box parseBox(const std::string& text, const std::string& content)
{
    const std::size_t colon = std::min(content.find(':'), content.size());
    const auto sizes = split(content.substr(0, colon), 'x');
    MadeGrid::Box box{{1, 1, 1}, MadeGrid::Others{}};
    if (sizes.size() > box.points.size())
        throw usage_error(text + ": " + boxRule);
    for (std::size_t axis = 0; axis < sizes.size(); ++axis)
    {
        const auto count = parseCount(sizes[axis]);
        if (!count)
            throw usage_error(text + ": " + boxRule);
        box.points[axis] = *count;
    }
    requireCounts(text, box.points);
    if (colon == content.size())
        return box;
    const std::string bounds = content.substr(colon + 1);
    if (bounds.empty())
        throw usage_error(text + ": " + boxRule);
    const auto corners = split(bounds, ':');
    const auto first = parsePosition(corners.front());
    const auto second = corners.size() == 2 ? parsePosition(corners.back()) : std::nullopt;
    if (!first || !second)
    {
        // Two positions with a mistake in one are no name of a file.
        if (first)
            throw usage_error(text + ": " + boxRule);
        box.bounds = io::DataReference::parse(bounds);
        return box;
    }
    Corners ordered;
    for (std::size_t axis = 0; axis < 3; ++axis)
        std::tie(ordered.lower[axis], ordered.upper[axis]) =
            std::minmax((*first)[axis], (*second)[axis]);
    box.bounds = ordered;
    return box;
}

/// Calls `visitor.operator()<D>()` with the number of coordinates, at least `dimension`, that are not 0
/// at all of the positions.
template<typename Visitor>
std::shared_ptr<const Domain> visitDimension(std::initializer_list<Position> positions,
                                             std::size_t dimension, const Visitor& visitor)
{
    for (const Position& position : positions)
        for (std::size_t axis = 0; axis < position.size(); ++axis)
            if (position[axis] != 0.0)
                dimension = std::max(dimension, axis + 1);
    if (dimension == 1)
        return visitor.template operator()<1>();
    if (dimension == 2)
        return visitor.template operator()<2>();
    return visitor.template operator()<3>();
}

template<std::size_t D>
Tensor<double, D> truncated(const Position& position)
{
    Tensor<double, D> result;
    std::copy_n(position.begin(), D, result.begin());
    return result;
}

std::shared_ptr<const Domain> makeLine(const MadeGrid::Line& line, std::size_t dimension)
{
    return visitDimension(
        {line.from, line.to}, dimension,
        [&]<std::size_t D>() -> std::shared_ptr<const Domain>
        {
            const auto from = truncated<D>(line.from);
            const auto to = truncated<D>(line.to);
            std::vector<Tensor<double, D>> points(line.points);
            std::vector<std::int64_t> connectivity;
            std::vector<std::int64_t> offsets{0};
            const std::size_t last = line.points - 1;
            connectivity.reserve(2 * last);
            offsets.reserve(line.points);
            for (std::size_t i = 0; i <= last; ++i)
            {
                // Both ends are exact, and coordinates that do not change.
                const double share = static_cast<double>(i) / static_cast<double>(last);
                points[i] = i == last ? to : from + (to - from) * share;
                if (i == 0)
                    continue;
                connectivity.push_back(static_cast<std::int64_t>(i - 1));
                connectivity.push_back(static_cast<std::int64_t>(i));
                offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
            }
            return std::make_shared<const UnstructuredGrid<D>>(
                std::make_shared<const DefaultValueArray<Tensor<double, D>>>(std::move(points),
                                                                             Precision::Float64),
                CellTable{std::vector<CellType>(last, CellType::Lines),
                          IndexArray(std::move(offsets)), IndexArray(std::move(connectivity))});
        });
}

/// Widens the bounds so that they hold an object.
void addBounds(const DataObject& object, std::optional<Corners>& bounds)
{
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
        for (const auto& member : bundle->members())
            addBounds(*member, bounds);
    if (const auto* const function = dynamic_cast<const FunctionBase*>(&object))
        return addBounds(*function->domain(), bounds);
    const auto* const points = dynamic_cast<const PointSetBase*>(&object);
    if (points == nullptr || points->numPoints() == 0)
        return;
    const auto box = points->boundingBox();
    Corners corners{};
    for (std::size_t axis = 0; axis < box.getDimensions(); ++axis)
        std::tie(corners.lower[axis], corners.upper[axis]) = box[axis];
    if (!bounds)
        bounds = corners;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        bounds->lower[axis] = std::min(bounds->lower[axis], corners.lower[axis]);
        bounds->upper[axis] = std::max(bounds->upper[axis], corners.upper[axis]);
    }
}

std::shared_ptr<const Domain> makeBox(const std::string& text,
                                      const std::array<std::size_t, 3>& points,
                                      const Corners& corners, std::size_t dimension)
{
    constexpr std::string_view axes = "xyz";
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const bool isFlat = corners.lower[axis] == corners.upper[axis];
        if (isFlat && points[axis] > 1)
            throw usage_error(text + ": " + axes[axis] + " is " + toText(corners.lower[axis]) +
                              " everywhere in the bounds, so that 1 point along " + axes[axis] +
                              " is enough");
        if (!isFlat && points[axis] == 1)
            throw usage_error(text + ": 1 point along " + axes[axis] + " cannot span " +
                              toText(corners.lower[axis]) + " to " + toText(corners.upper[axis]) +
                              "; @box:50x25x10 has a number for each axis");
    }
    return visitDimension({corners.lower, corners.upper}, dimension,
                          [&]<std::size_t D>() -> std::shared_ptr<const Domain>
                          {
                              typename UniformGrid<D>::Layout layout;
                              layout.origin = truncated<D>(corners.lower);
                              for (std::size_t axis = 0; axis < D; ++axis)
                              {
                                  layout.size[axis] = points[axis];
                                  const double steps = static_cast<double>(points[axis]) - 1.0;
                                  if (steps > 0.0)
                                      layout.spacing[axis] =
                                          (corners.upper[axis] - corners.lower[axis]) / steps;
                              }
                              return std::make_shared<const UniformGrid<D>>(layout);
                          });
}

/// The points without their cells.
std::shared_ptr<const Domain> withoutCells(const std::shared_ptr<const Domain>& domain)
{
    std::shared_ptr<const Domain> cloud = domain;
    visitObject<TypeList<EmbeddedCellComplex<1>, EmbeddedCellComplex<2>, EmbeddedCellComplex<3>>>(
        *domain,
        [&]<std::size_t D>(const EmbeddedCellComplex<D>& grid)
        {
            using Point = Tensor<double, D>;
            std::vector<Point> points(grid.numPoints());
            for (std::size_t i = 0; i < points.size(); ++i)
                points[i] = grid.point(i);
            cloud = std::make_shared<const PointCloud<D>>(
                std::make_shared<const DefaultValueArray<Point>>(std::move(points),
                                                                 grid.coordinatePrecision()));
        });
    return cloud;
}

}

MadeGrid MadeGrid::parse(const std::string& text)
{
    const std::size_t colon = std::min(text.find(':'), text.size());
    const std::string kind = text.substr(0, colon);
    const std::string content = colon < text.size() ? text.substr(colon + 1) : "";
    if (kind == "@line")
        return {text, parseLine(text, content)};
    if (kind == "@box")
        return {text, parseBox(text, content)};
    if (kind == "@points" && content.empty())
        throw usage_error(text + ": points are @points:FILE, as in @points:probes.csv");
    if (kind == "@points")
        return {text, Points{io::DataReference::parse(content)}};
    static const std::array<std::string, 3> kinds{"@line", "@box", "@points"};
    throw usage_error("no grid is called \"" + kind + "\"" + suggestionFor(kind, kinds));
}

bool MadeGrid::dependsOnOthers() const
{
    const auto* const box = std::get_if<Box>(&shape);
    return box != nullptr && std::holds_alternative<Others>(box->bounds);
}

std::vector<std::filesystem::path> MadeGrid::files(io::Loader& loader) const
{
    const io::DataReference* file = nullptr;
    if (const auto* const points = std::get_if<Points>(&shape))
        file = &points->file;
    else if (const auto* const box = std::get_if<Box>(&shape))
        file = std::get_if<io::DataReference>(&box->bounds);
    return file == nullptr ? std::vector<std::filesystem::path>{} : loader.filesOf(*file);
}

std::shared_ptr<const Domain> MadeGrid::make(
    const std::vector<std::shared_ptr<const DataObject>>& others, io::Loader& loader,
    std::size_t dimension) const
{
    if (const auto* const line = std::get_if<Line>(&shape))
        return makeLine(*line, dimension);
    if (const auto* const points = std::get_if<Points>(&shape))
    {
        io::DataReference file = points->file;
        if (!file.dimension && dimension > 1)
        {
            const auto smallest = loader.loadGrid(file);
            file.dimension =
                std::max(dimension, dynamic_cast<const PointSetBase&>(*smallest).dimension());
        }
        return withoutCells(loader.loadGrid(file));
    }
    const auto& box = std::get<Box>(shape);
    if (const auto* const corners = std::get_if<Corners>(&box.bounds))
        return makeBox(text, box.points, *corners, dimension);
    std::optional<Corners> bounds;
    if (const auto* const file = std::get_if<io::DataReference>(&box.bounds))
        addBounds(*loader.loadGrid(*file), bounds);
    else
        for (const auto& other : others)
            addBounds(*other, bounds);
    if (!bounds)
        throw usage_error(text + ": there is no data with points whose bounds it could span; give "
                                 "them as in @box:50x25x10:0,0,0:1,1,1");
    return makeBox(text, box.points, *bounds, dimension);
}

}
