#include "../console/Messages.hpp"
#include "../console/Warnings.hpp"
#include "../run/Threads.hpp"
#include "../text/Layout.hpp"
#include "ArrayStatistics.hpp"
#include "Commands.hpp"
#include "Session.hpp"

#include <tavrin/pipeline/Json.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace tavrin::app
{

using pipeline::Json;
using pipeline::jsonText;

namespace
{

using io::FileInfo;
using Rows = std::vector<std::vector<std::string>>;

/// The reference by which a run names the array.
std::string referenceTo(const FileInfo::Array& array, const FileInfo& info)
{
    const bool isAmbiguous =
        std::ranges::count(info.arrays, array.name, &FileInfo::Array::name) > 1;
    return info.file.string() + '#' + array.name +
           (isAmbiguous ? "?on=" + std::string(nameOf(array.association)) : "");
}

/// The kind of grid. A dimension is only meaningful if there are points.
std::string gridText(const FileInfo& info)
{
    if (info.points == 0)
        return "no points";
    return (info.structuring ? std::string(nameOf(*info.structuring)) + ", " : "") +
           std::to_string(info.dimension) + "-D";
}

std::string pointText(const FileInfo& info)
{
    std::string text = std::to_string(info.points);
    if (info.size)
        text += fmt::format(" ({} x {} x {})", (*info.size)[0], (*info.size)[1], (*info.size)[2]);
    return text;
}

std::string cellText(const FileInfo& info)
{
    std::vector<std::string> types;
    types.reserve(info.cellTypes.size());
    for (const auto& [type, count] : info.cellTypes)
        types.push_back(std::to_string(count) + ' ' + std::string(nameOf(type)));
    return std::to_string(info.cells) + (types.empty() ? "" : " (" + joined(types, ", ") + ")");
}

std::string timeText(const std::vector<double>& steps)
{
    constexpr std::size_t few = 12;
    if (steps.size() <= few)
        return fmt::format("{} ({})", steps.size(), fmt::join(steps, ", "));
    return fmt::format("{} from {} to {}", steps.size(), steps.front(), steps.back());
}

/// The blocks that have the array.
std::string blockText(const FileInfo::Array& array, const FileInfo& info)
{
    std::vector<std::string> names;
    for (const FileInfo& block : info.blocks)
        if (std::ranges::any_of(
                block.arrays, [&](const FileInfo::Array& other)
                { return other.name == array.name && other.association == array.association; }))
            names.push_back(block.block);
    constexpr std::size_t few = 3;
    if (names.size() == info.blocks.size())
        return "all";
    return names.size() <= few ? joined(names, ", ")
                               : fmt::format("{} of {}", names.size(), info.blocks.size());
}

std::string arrayTable(const FileInfo& info)
{
    const bool hasBlocks = !info.blocks.empty();
    Rows rows{{"ARRAY", "ON", "COMPONENTS", "STORED AS", "VALUES", "REFERENCE"}};
    for (const FileInfo::Array& array : info.arrays)
    {
        const bool isUsable = !array.valueType.empty();
        const std::string reference = referenceTo(array, info);
        rows.push_back({array.name, std::string(nameOf(array.association)),
                        std::to_string(array.components), std::string(nameOf(array.precision)),
                        isUsable ? array.valueType : "-",
                        isUsable && reference == oneLine(reference) ? reference : "-"});
        if (hasBlocks)
            rows.back().insert(rows.back().end() - 1, blockText(array, info));
    }
    if (hasBlocks)
        rows.front().insert(rows.front().end() - 1, "IN BLOCKS");
    return alignedColumns(rows, 0, LastColumn::Unwrapped);
}

std::string blockTable(const FileInfo& info)
{
    Rows rows{{"BLOCK", "GRID", "POINTS", "CELLS", "FILE"}};
    for (const FileInfo& block : info.blocks)
        rows.push_back(
            {block.block, gridText(block), pointText(block), cellText(block), block.file.string()});
    return alignedColumns(rows, 0, LastColumn::Unwrapped);
}

std::string sheet(const FileInfo& info)
{
    Rows rows{{"file", info.file.string()}, {"format", info.format}};
    if (!info.blocks.empty())
        rows.push_back({"blocks", std::to_string(info.blocks.size())});
    rows.insert(rows.end(),
                {{"grid", gridText(info)}, {"points", pointText(info)}, {"cells", cellText(info)}});
    constexpr std::array axes{"x", "y", "z"};
    for (std::size_t i = 0; i < std::min(info.bounds.size(), axes.size()); ++i)
        rows.push_back({axes[i], fmt::format("{:.9g} .. {:.9g}", info.bounds[i].first,
                                             info.bounds[i].second)});
    if (!info.timeSteps.empty())
        rows.push_back({"time steps", timeText(info.timeSteps)});
    std::string page = alignedColumns(rows);
    if (!info.blocks.empty())
        page += '\n' + blockTable(info);
    return page + '\n' + (info.arrays.empty() ? "No arrays.\n" : arrayTable(info));
}

Json toJson(const FileInfo& info)
{
    Json arrays = Json::array();
    for (const FileInfo::Array& array : info.arrays)
        arrays.push_back({{"name", array.name},
                          {"on", nameOf(array.association)},
                          {"components", array.components},
                          {"precision", nameOf(array.precision)},
                          {"valueType", array.valueType},
                          {"reference", referenceTo(array, info)}});
    Json cellTypes = Json::object();
    for (const auto& [type, count] : info.cellTypes)
        cellTypes[std::string(nameOf(type))] = count;
    Json json{{"file", info.file.string()},
              {"format", info.format},
              {"grid", nullptr},
              {"dimension", info.dimension},
              {"points", info.points},
              {"cells", info.cells},
              {"size", nullptr},
              {"cellTypes", std::move(cellTypes)},
              {"bounds", info.bounds},
              {"timeSteps", info.timeSteps},
              {"arrays", std::move(arrays)},
              {"blocks", Json::array()}};
    if (info.structuring)
        json["grid"] = nameOf(*info.structuring);
    if (info.size)
        json["size"] = *info.size;
    for (const FileInfo& block : info.blocks)
    {
        Json& one = json["blocks"].emplace_back(toJson(block));
        one.erase("blocks");
        one["name"] = block.block;
    }
    return json;
}

/// The times as a set expression that holds exactly them.
std::string setOf(const std::vector<double>& times)
{
    std::vector<std::string> texts;
    std::ranges::transform(times, std::back_inserter(texts),
                           [](double time) { return toText(time); });
    return '{' + joined(texts, ",") + '}';
}

std::string shown(double number)
{
    return std::isnan(number) ? "-" : fmt::format("{:.9g}", number);
}

/// The rows of an array, one for each component and one for the norm.
void addRows(const ArrayStatistics& statistics, std::size_t numSteps, Rows& rows)
{
    const auto addRow = [&](const std::string& component, const NumberStatistics& numbers)
    {
        const bool hasFinite = numbers.finite > 0;
        rows.push_back({statistics.array.name, std::string(nameOf(statistics.array.association)),
                        component, hasFinite ? shown(numbers.least) : "-",
                        hasFinite ? shown(numbers.greatest) : "-", shown(numbers.mean()),
                        std::to_string(numbers.notANumber), std::to_string(numbers.infinite),
                        std::to_string(statistics.invalid),
                        fmt::format("{} of {}", statistics.steps, numSteps)});
    };
    for (std::size_t i = 0; i < statistics.components.size(); ++i)
        addRow(statistics.componentNames[i].empty() ? "-" : statistics.componentNames[i],
               statistics.components[i]);
    if (statistics.norm)
        addRow("norm", *statistics.norm);
}

std::string statisticsTable(const std::vector<ArrayStatistics>& all, std::size_t numSteps)
{
    Rows rows{{"ARRAY", "ON", "COMPONENT", "MINIMUM", "MAXIMUM", "MEAN", "NAN", "INFINITE",
               "INVALID", "STEPS"}};
    std::string notes;
    for (const ArrayStatistics& statistics : all)
    {
        addRows(statistics, numSteps, rows);
        if (statistics.components.empty())
            notes += fmt::format("{} has {} components; only its norm is shown.\n",
                                 oneLine(statistics.array.name), statistics.array.components);
    }
    if (numSteps == 1)
        for (auto& row : rows)
            row.pop_back();
    return all.empty() ? "" : '\n' + alignedColumns(rows, 0, LastColumn::Unwrapped) + notes;
}

Json toJson(const NumberStatistics& numbers)
{
    const bool hasFinite = numbers.finite > 0;
    return {{"minimum", hasFinite ? Json(numbers.least) : Json(nullptr)},
            {"maximum", hasFinite ? Json(numbers.greatest) : Json(nullptr)},
            {"mean", hasFinite ? Json(numbers.mean()) : Json(nullptr)},
            {"finite", numbers.finite},
            {"notANumber", numbers.notANumber},
            {"infinite", numbers.infinite}};
}

Json toJson(const ArrayStatistics& statistics)
{
    Json components = Json::array();
    for (std::size_t i = 0; i < statistics.components.size(); ++i)
    {
        Json& one = components.emplace_back(toJson(statistics.components[i]));
        one["name"] = statistics.componentNames[i];
    }
    return {{"name", statistics.array.name},
            {"on", nameOf(statistics.array.association)},
            {"steps", statistics.steps},
            {"values", statistics.values},
            {"invalid", statistics.invalid},
            {"components", std::move(components)},
            {"norm", statistics.norm ? toJson(*statistics.norm) : Json(nullptr)}};
}

class InfoCommand final : public Command
{
public:
    explicit InfoCommand(CLI::App& program)
        : Command(
              program,
              {.name = "info",
               .words = "FILE",
               .summary = "Shows the content of a data file: grid, arrays, time steps",
               .details =
                   "The last column of the array table is the reference for a run. FILE may be "
                   "followed by ?dimension=D, ?time=T or ?block=NAME.\n\n"
                   "--stats reads all arrays of all time steps. Minimum, maximum and mean are those "
                   "of the finite numbers; values that are marked as invalid are left out.\n\n"
                   "The JSON is one object with formatVersion, file, format, grid, dimension, points, "
                   "cells, size (points along each axis of a structured grid, else null), "
                   "cellTypes {name: number}, bounds [[lower, upper]] (empty without points), "
                   "timeSteps, arrays [{name, on, components, precision, valueType, reference}], "
                   "and blocks, an array of such objects with a name each. If there are several "
                   "blocks, everything else describes all of them together, and grid is null. "
                   "With --stats there is statistics, an array of {name, on, steps, values, invalid, "
                   "components [{minimum, maximum, mean, finite, notANumber, infinite, name}], norm}, "
                   "where norm is like a component, and null for scalars. With --times there is times, "
                   "the set expression.",
               .examples = {
                   {"tavrin info flow.vtu", "The grid of a file and its arrays."},
                   {"tavrin info double_gyre.pvd --stats", "The ranges of all arrays over time."},
                   {"tavrin run sample Field=double_gyre.pvd Grid=@line:0.5,0:0.5,1:50 "
                    "\"Time=$(tavrin info double_gyre.pvd --times)\" -o profile.csv",
                    "A profile at all time steps of a series."}}})
    {
        syntax().add_flag("--json", mWantsJson, "prints JSON");
        syntax().add_flag("--stats", mWantsStatistics,
                          "adds range, mean and counts of each array and component");
        syntax().add_flag("--times", mWantsTimes,
                          "prints the times as a set expression, alone unless --stats is given");
    }

    void execute(const Words& words, Session& session) override
    {
        const auto reference = io::DataReference::parse(onlyWord(words));
        startThreads();
        Warnings warnings(session.console);
        io::Loader loader([&](const std::string& line) { warnings.add(line); }, session.abortFlag);
        if (mWantsTimes && !mWantsStatistics && !mWantsJson)
            return session.console.print(setOf(loader.timesOf(reference)) + '\n');
        const FileInfo info = loader.inspect(reference);
        std::vector<ArrayStatistics> statistics;
        if (mWantsStatistics)
        {
            ProgressBar bar(session.console, session.progressMode);
            statistics = arrayStatistics(reference, info.arrays, loader, bar, session.abortFlag);
        }
        const std::string times = setOf(loader.timesOf(reference));
        warnings.print();
        if (mWantsJson)
            return session.console.print(jsonText(json(info, statistics, times)));
        const std::size_t numSteps = std::max<std::size_t>(1, loader.timesOf(reference).size());
        session.console.print(sheet(info) + statisticsTable(statistics, numSteps) +
                              (mWantsTimes ? "\ntimes  " + times + '\n' : ""));
    }

private:
    Json json(const FileInfo& info, const std::vector<ArrayStatistics>& statistics,
              const std::string& times) const
    {
        constexpr int formatVersion = 1;
        Json object{{"formatVersion", formatVersion}};
        object.update(toJson(info));
        if (mWantsStatistics)
            object["statistics"] = Json::array();
        for (const ArrayStatistics& one : statistics)
            object["statistics"].push_back(toJson(one));
        if (mWantsTimes)
            object["times"] = times;
        return object;
    }

    bool mWantsJson = false;
    bool mWantsStatistics = false;
    bool mWantsTimes = false;
};

}

std::unique_ptr<Command> makeInfoCommand(CLI::App& program)
{
    return std::make_unique<InfoCommand>(program);
}

}
