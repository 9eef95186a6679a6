#include <tavrin/pipeline/RunReport.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <fstream>
#include <sstream>

namespace tavrin::pipeline
{

namespace
{

/// Grows when the meaning of a part of the report changes or a part is removed.
constexpr int formatVersion = 1;

Json jsonOf(const ReportValue& value);

Json jsonOf(const ReportValue::Members& members)
{
    Json object = Json::object();
    for (const auto& [name, value] : members)
        object[name] = jsonOf(value);
    return object;
}

Json jsonOf(const ReportValue& value)
{
    if (value.members() == nullptr)
        return std::visit([](const auto& content) { return Json(content); }, value.content());
    return jsonOf(*value.members());
}

Json optionsJson(const AlgorithmDescription& description,
                 std::span<const OptionAssignment> assignments)
{
    Json options = Json::object();
    for (const auto& option : description.options)
    {
        const bool isBundle = option.kind == InputKind::Bundle;
        if (option.kind == InputKind::Label)
            continue;
        Json& value = options[option.name];
        if (option.kind != InputKind::Data && !isBundle)
        {
            value = option.value;
            continue;
        }
        for (const OptionAssignment& assignment : assignments)
        {
            if (assignment.option != option.name)
                continue;
            if (assignment.value.empty())
                value = nullptr;
            else if (isBundle)
                value.push_back(assignment.value);
            else
                value = assignment.value;
        }
    }
    return options;
}

}

std::size_t peakMemoryBytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
        {
            std::istringstream value(line.substr(6));
            std::size_t kibibytes = 0;
            value >> kibibytes;
            return kibibytes * 1024;
        }
    return 0;
}

Json RunReport::toJson(const AlgorithmRun& run, std::span<const OptionAssignment> assignments) const
{
    const AlgorithmDescription description = run.describe();
    Json outputList = Json::array();
    for (const Output& output : outputs)
    {
        Json entry{{"port", output.port}, {"file", output.file.string()}};
        entry.update(output.content);
        outputList.push_back(std::move(entry));
    }
    const Json results = jsonOf(run.results());
    Json report{{"formatVersion", formatVersion},
                {"algorithm", description.name},
                {"options", optionsJson(description, assignments)},
                {"seconds",
                 {{"read", seconds.read}, {"execute", seconds.execute}, {"write", seconds.write}}},
                {"peakMemoryBytes", peakMemoryBytes()},
                {"infoLog", linesOf(run.infoLog())},
                {"debugLog", linesOf(run.debugLog())},
                {"hints", run.hints()},
                {"suggestions", run.suggestions()},
                {"results", results},
                {"outputs", std::move(outputList)}};
    if (results.contains("samples"))
        report["samples"] = results["samples"];
    return report;
}

}
