#include "RunReport.hpp"

#include "../text/Layout.hpp"

#include <fstream>
#include <sstream>

namespace tavrin::app
{

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

Json jsonOf(const ReportValue& value)
{
    const auto* const members = std::get_if<ReportValue::Members>(&value.content());
    if (members == nullptr)
        return std::visit(
            [](const auto& content) -> Json
            {
                if constexpr (std::is_constructible_v<Json, decltype(content)>)
                    return content;
                else
                    return {};
            },
            value.content());
    Json object = Json::object();
    for (const auto& [name, member] : *members)
        object[name] = jsonOf(member);
    return object;
}

Json RunReport::toJson() const
{
    Json outputList = Json::array();
    for (const Output& output : outputs)
    {
        Json entry{{"port", output.port}, {"file", output.file.string()}};
        entry.update(output.content);
        outputList.push_back(std::move(entry));
    }
    Json report{{"algorithm", algorithm},
                {"options", options},
                {"seconds",
                 {{"read", seconds.read}, {"execute", seconds.execute}, {"write", seconds.write}}},
                {"peakMemoryBytes", peakMemoryBytes()},
                {"infoLog", linesOf(infoLog)},
                {"debugLog", linesOf(debugLog)},
                {"outputs", std::move(outputList)}};
    for (const auto& [name, value] : results)
        report[name] = jsonOf(value);
    return report;
}

}
