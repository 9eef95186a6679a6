#include "../Session.hpp"
#include "../text/Json.hpp"
#include "../text/Layout.hpp"
#include "Commands.hpp"

#include <tavrin/io/Loader.hpp>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace tavrin::app
{

namespace
{

using io::FileInfo;
using Rows = std::vector<std::vector<std::string>>;

/// How an array is named in a run.
std::string referenceTo(const FileInfo::Array& array, const FileInfo& info, const std::string& file)
{
    const bool isAmbiguous =
        std::ranges::count(info.arrays, array.name, &FileInfo::Array::name) > 1;
    return file + '#' + array.name +
           (isAmbiguous ? "?on=" + std::string(nameOf(array.association)) : "");
}

/// Without points the dimension that was found says nothing.
std::string gridText(const FileInfo& info)
{
    return info.points == 0 ? "no points"
                            : fmt::format("{}, {}-D", nameOf(info.structuring), info.dimension);
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

std::string sheet(const FileInfo& info, const std::string& file)
{
    Rows rows{{"file", file},
              {"format", info.format},
              {"grid", gridText(info)},
              {"points", pointText(info)},
              {"cells", cellText(info)}};
    constexpr std::array axes{"x", "y", "z"};
    for (std::size_t i = 0; i < std::min(info.bounds.size(), axes.size()); ++i)
        rows.push_back({axes[i], fmt::format("{:.9g} .. {:.9g}", info.bounds[i].first,
                                             info.bounds[i].second)});
    if (!info.timeSteps.empty())
        rows.push_back({"time steps", timeText(info.timeSteps)});
    std::string page = alignedColumns(rows);

    if (info.arrays.empty())
        return page + "\nNo arrays.\n";
    Rows arrays{{"ARRAY", "ON", "COMPONENTS", "STORED AS", "VALUES", "REFERENCE"}};
    for (const FileInfo::Array& array : info.arrays)
    {
        const bool isUsable = !array.valueType.empty();
        arrays.push_back({array.name, std::string(nameOf(array.association)),
                          std::to_string(array.components), std::string(nameOf(array.precision)),
                          isUsable ? array.valueType : "-",
                          isUsable ? referenceTo(array, info, file) : "-"});
    }
    return page + '\n' + alignedColumns(arrays, 0, LastColumn::AsItIs);
}

Json toJson(const FileInfo& info, const std::string& file)
{
    Json arrays = Json::array();
    for (const FileInfo::Array& array : info.arrays)
        arrays.push_back({{"name", array.name},
                          {"on", nameOf(array.association)},
                          {"components", array.components},
                          {"precision", nameOf(array.precision)},
                          {"valueType", array.valueType},
                          {"reference", referenceTo(array, info, file)}});
    Json cellTypes = Json::object();
    for (const auto& [type, count] : info.cellTypes)
        cellTypes[std::string(nameOf(type))] = count;
    Json json{{"file", file},
              {"format", info.format},
              {"grid", nameOf(info.structuring)},
              {"dimension", info.dimension},
              {"points", info.points},
              {"cells", info.cells},
              {"size", nullptr},
              {"cellTypes", std::move(cellTypes)},
              {"bounds", info.bounds},
              {"timeSteps", info.timeSteps},
              {"arrays", std::move(arrays)}};
    if (info.size)
        json["size"] = *info.size;
    return json;
}

class InfoCommand final : public Command
{
public:
    explicit InfoCommand(CLI::App& program)
        : Command(
              program,
              {.name = "info",
               .words = "FILE",
               .summary = "Tells what a data file holds: grid, arrays, time steps",
               .details =
                   "The last column of the arrays is how a run refers to them. FILE may be "
                   "followed by ?dimension=D or ?time=T.\n\n"
                   "The JSON is one object with file, format, grid, dimension, points, "
                   "cells, size (points along each axis of a structured grid, else null), "
                   "cellTypes {name: number}, bounds [[lower, upper]] (empty without points), timeSteps, and "
                   "arrays [{name, on, components, precision, valueType, reference}].",
               .examples = {{"tavrin info flow.vtu", "The grid of a file and its arrays."}}})
    {
        declaration().add_flag("--json", mWantsJson, "prints JSON");
    }

    void execute(const Words& words, Session& session) override
    {
        const auto reference = io::DataReference::parse(onlyWord(words));
        io::Loader loader([&](const std::string& line)
                          { session.console.line("warning: " + line); },
                          session.abortFlag);
        const FileInfo info = loader.inspect(reference);
        const std::string file = reference.file.string();
        session.console.print(mWantsJson ? jsonText(toJson(info, file)) : sheet(info, file));
    }

private:
    bool mWantsJson = false;
};

}

std::unique_ptr<Command> makeInfoCommand(CLI::App& program)
{
    return std::make_unique<InfoCommand>(program);
}

}
