#include "AlgorithmSheet.hpp"

#include "Layout.hpp"

#include <tavrin/pipeline/ColorMapInput.hpp>

#include <algorithm>

namespace tavrin::app
{

namespace
{

using Option = AlgorithmDescription::Option;
using Rows = std::vector<std::vector<std::string>>;

bool takesData(const Option& option)
{
    return option.kind == InputKind::Data || option.kind == InputKind::Bundle;
}

/// How a data option is given.
std::string placeholder(const InputBase& input)
{
    if (pipeline::takesColorMap(input))
        return "COLORMAP";
    const auto* const data = dynamic_cast<const InputDataObject*>(&input);
    return data != nullptr && dataSortOf(data->types()) == DataSort::Domain ? "FILE" : "FILE#ARRAY";
}

/// The lines about what an option takes and has.
std::vector<std::string> valueLines(const Option& option, const InputBase& input)
{
    if (option.kind == InputKind::Label)
        return linesOf(option.value);
    std::vector<std::string> lines;
    if (takesData(option))
        lines.push_back("takes " + placeholder(input) +
                        (option.kind == InputKind::Bundle ? ", several times" : "") +
                        (option.isConnected ? "; connected" : ""));
    else
        lines.push_back("default: " + option.defaultValue +
                        (option.value == option.defaultValue ? "" : "; now: " + option.value));
    for (std::size_t i = 0; i < option.choices.size(); ++i)
        lines.push_back((i == 0 ? "choices: " : "         ") + option.choices[i]);
    return lines;
}

std::string remarks(const Option& option)
{
    std::string text;
    if (option.isRequired)
        text += " (required)";
    if (!option.isVisible)
        text += " (hidden)";
    return text;
}

Rows optionRows(const std::vector<Option>& options, const AlgorithmRun& run)
{
    Rows rows;
    std::string group;
    for (const Option& option : options)
    {
        if (option.group != group)
            rows.push_back({"[" + option.group + "]"});
        else if (option.afterSeparator)
            rows.emplace_back();
        group = option.group;
        rows.push_back(
            {option.name, std::string(nameOf(option.kind)), option.help + remarks(option)});
        for (const std::string& line : valueLines(option, run.input(option.name)))
            rows.push_back({"", "", line});
    }
    return rows;
}

bool isNeededInExample(const Option& option)
{
    return option.isVisible &&
           (takesData(option) || (option.kind == InputKind::Choice && !option.choices.empty()));
}

std::string exampleCall(const AlgorithmRun& run, const AlgorithmDescription& description)
{
    std::string call = "tavrin run " + shellWord(description.name);
    for (const Option& option : description.options)
        if (isNeededInExample(option))
            call += " " + shellWord(option.name + "=" +
                                    (takesData(option) ? placeholder(run.input(option.name))
                                                       : option.value));
    for (const auto& output : description.outputs)
        call += " -o " + shellWord(output.name + (output.isGraphics ? "=FILE.png" : "=FILE.vtu"));
    return call;
}

}

std::string algorithmSheet(const AlgorithmRun& run)
{
    const AlgorithmDescription description = run.describe();
    std::string page = description.name + '\n' + wrapped(description.description, 0) + '\n';
    if (!description.options.empty())
        page += "\nOptions:\n" + alignedColumns(optionRows(description.options, run), 2);
    if (!description.outputs.empty())
    {
        Rows rows;
        for (const auto& output : description.outputs)
            rows.push_back({output.name, output.isGraphics ? "graphics" : "data"});
        page += "\nOutputs:\n" + alignedColumns(rows, 2);
    }
    return page + "\nExample:\n  " + exampleCall(run, description) + '\n';
}

Json algorithmJson(const AlgorithmDescription& description)
{
    Json options = Json::array();
    for (const Option& option : description.options)
        options.push_back({{"name", option.name},
                           {"kind", nameOf(option.kind)},
                           {"help", option.help},
                           {"group", option.group},
                           {"afterSeparator", option.afterSeparator},
                           {"required", option.isRequired},
                           {"visible", option.isVisible},
                           {"default", option.defaultValue},
                           {"value", option.value},
                           {"choices", option.choices},
                           {"types", option.types},
                           {"connected", option.isConnected}});
    Json outputs = Json::array();
    for (const auto& output : description.outputs)
        outputs.push_back({{"name", output.name},
                           {"kind", output.isGraphics ? "graphics" : "data"},
                           {"types", output.types}});
    return {{"name", description.name},
            {"description", description.description},
            {"options", std::move(options)},
            {"outputs", std::move(outputs)}};
}

}
