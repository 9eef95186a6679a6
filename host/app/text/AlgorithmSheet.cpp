#include "AlgorithmSheet.hpp"

#include "Layout.hpp"

namespace tavrin::app
{

using pipeline::Json;

namespace
{

using pipeline::AlgorithmCard;
using pipeline::DataInput;
using Option = AlgorithmDescription::Option;
using Rows = std::vector<std::vector<std::string>>;

/// Appends a list with its title before the first entry and the others below that.
void addList(std::vector<std::string>& lines, const std::string& title,
             const std::vector<std::string>& entries)
{
    for (std::size_t i = 0; i < entries.size(); ++i)
        lines.push_back((i == 0 ? title : std::string(title.size(), ' ')) + entries[i]);
}

/// The lines about the values that an option takes and the value that it has.
std::vector<std::string> valueLines(const Option& option, const DataInput* data)
{
    if (option.kind == InputKind::Label)
        return linesOf(option.value);
    std::vector<std::string> lines;
    if (data != nullptr)
    {
        lines.push_back("takes " + data->placeholder +
                        (option.kind == InputKind::Bundle ? ", several times" : "") +
                        (option.isConnected ? "; connected" : ""));
        addList(lines, "accepts: ", option.types);
    }
    else
        lines.push_back("default: " + option.defaultValue +
                        (option.value == option.defaultValue ? "" : "; now: " + option.value));
    addList(lines, "choices: ", option.choices);
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

Rows optionRows(const AlgorithmCard& card)
{
    Rows rows;
    std::string group;
    for (const Option& option : card.options)
    {
        if (option.group != group)
            rows.push_back({"[" + option.group + "]"});
        else if (option.afterSeparator)
            rows.emplace_back();
        group = option.group;
        rows.push_back(
            {option.name, std::string(nameOf(option.kind)), option.help + remarks(option)});
        for (const std::string& line : valueLines(option, card.dataInput(option)))
            rows.push_back({"", "", line});
    }
    return rows;
}

std::string exampleCall(const AlgorithmCard& card)
{
    std::string call = "tavrin run " + shellWord(card.name);
    for (const Option& option : card.options)
    {
        const DataInput* const data = card.dataInput(option);
        const bool isChoice = option.kind == InputKind::Choice && !option.choices.empty();
        if (option.isVisible && (data != nullptr || isChoice))
            call += " " + shellWord(option.name + "=" +
                                    (data == nullptr       ? option.value
                                     : data->kinds.empty() ? data->placeholder
                                                           : data->kinds.front()->placeholder));
    }
    for (const auto& output : card.outputs)
        call += " -o " + shellWord(output.name + (output.isGraphics ? "=FILE.png" : "=FILE.vtu"));
    return call;
}

Json acceptedJson(const DataInput* data)
{
    Json accepted = Json::array();
    if (data != nullptr)
        for (const pipeline::DataKind* const kind : data->kinds)
            accepted.push_back({{"kind", kind->name}, {"placeholder", kind->placeholder}});
    return accepted;
}

}

std::string algorithmSheet(const AlgorithmCard& card)
{
    std::string page = card.name + '\n' + wrapped(card.description, 0) + '\n';
    if (!card.options.empty())
        page += "\nOptions:\n" + alignedColumns(optionRows(card), 2);
    if (!card.outputs.empty())
    {
        Rows rows;
        for (const auto& output : card.outputs)
            rows.push_back({output.name, output.isGraphics ? "graphics" : "data"});
        page += "\nOutputs:\n" + alignedColumns(rows, 2);
    }
    return page + "\nExample:\n  " + exampleCall(card) + '\n';
}

Json algorithmJson(const AlgorithmCard& card)
{
    Json options = Json::array();
    for (const Option& option : card.options)
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
                           {"references", acceptedJson(card.dataInput(option))},
                           {"connected", option.isConnected}});
    Json outputs = Json::array();
    for (const auto& output : card.outputs)
        outputs.push_back({{"name", output.name},
                           {"kind", output.isGraphics ? "graphics" : "data"},
                           {"types", output.types}});
    return {{"formatVersion", 1},
            {"name", card.name},
            {"description", card.description},
            {"options", std::move(options)},
            {"outputs", std::move(outputs)}};
}

}
