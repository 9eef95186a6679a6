#include <tavrin/pipeline/RunReport.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <fstream>
#include <sstream>

namespace tavrin::pipeline
{

namespace
{

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

/// What a data option takes, as it was written.
Json dataJson(const OptionAssignment& assignment, const Plan& plan)
{
    if (assignment.source)
        return plan.steps.at(assignment.source->step).id + "." + assignment.source->port;
    return assignment.value.empty() ? Json() : Json(assignment.value);
}

Json optionsJson(const AlgorithmDescription& description, const Step& step, const Plan& plan)
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
        for (const OptionAssignment& assignment : step.assignments)
        {
            if (assignment.option != option.name)
                continue;
            Json data = dataJson(assignment, plan);
            if (isBundle && !data.is_null())
                value.push_back(std::move(data));
            else
                value = std::move(data);
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

Json reportOn(const AlgorithmRun& run, const Step& step, const Plan& plan,
              const RunMeasurements& measurements)
{
    const AlgorithmDescription description = run.describe();
    Json outputs = Json::array();
    for (const OutputReport& output : measurements.outputs)
    {
        Json entry{{"port", output.port}, {"file", output.file.string()}};
        entry.update(output.content);
        outputs.push_back(std::move(entry));
    }
    const auto& [read, execute, write] = measurements.seconds;
    const Json results = jsonOf(run.results());
    Json report{{"formatVersion", reportFormatVersion},
                {"algorithm", description.name},
                {"options", optionsJson(description, step, plan)},
                {"seconds", {{"read", read}, {"execute", execute}, {"write", write}}},
                {"peakMemoryBytes", peakMemoryBytes()},
                {"infoLog", linesOf(run.infoLog())},
                {"debugLog", linesOf(run.debugLog())},
                {"hints", run.hints()},
                {"suggestions", run.suggestions()},
                {"results", results},
                {"outputs", std::move(outputs)}};
    if (results.contains("samples"))
        report["samples"] = results["samples"];
    return report;
}

}
