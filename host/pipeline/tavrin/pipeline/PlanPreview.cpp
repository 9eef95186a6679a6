#include <tavrin/pipeline/PlanPreview.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <fmt/format.h>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

/// Bytes of coordinates per point, and of connectivity per cell, of a grid that stores them.
constexpr double bytesPerPoint = 24.0;
constexpr double bytesPerCell = 72.0;
/// At most, in a file and in memory.
constexpr double bytesPerNumber = 8.0;

struct Estimate
{
    double inputs = 0.0;
    /// Of one result: as many numbers as the largest input has.
    double result = 0.0;
};

void addFile(const io::DataReference& reference, const io::FileInfo& info, Estimate& estimate)
{
    const bool isStored = !info.structuring || *info.structuring == StructuringType::Unstructured ||
                          *info.structuring == StructuringType::Curvilinear;
    if (isStored)
        estimate.inputs += bytesPerPoint * static_cast<double>(info.points) +
                           bytesPerCell * static_cast<double>(info.cells);
    double values = 0.0;
    for (const auto& array : info.arrays)
    {
        const std::size_t elements =
            array.association == io::Association::Points ? info.points : info.cells;
        if (!reference.array || *reference.array == array.name)
            values = std::max(values, static_cast<double>(elements * array.components));
    }
    estimate.inputs += bytesPerNumber * values;
    estimate.result = std::max(estimate.result, bytesPerNumber * values);
}

/// An upper estimate: all inputs and all results at once.
double estimateBytes(const Plan& plan, io::Loader& loader)
{
    Estimate estimate;
    std::set<std::string> seen;
    for (const Step& step : plan.steps)
        for (const OptionAssignment& assignment : step.assignments)
            if (const auto* const reference =
                    assignment.reference
                        ? std::get_if<io::DataReference>(&assignment.reference->parsed)
                        : nullptr;
                reference != nullptr && seen.insert(assignment.reference->text).second)
                addFile(*reference, loader.inspect(*reference), estimate);
    return estimate.inputs + estimate.result * static_cast<double>(plan.steps.size());
}

std::string memoryText(double bytes)
{
    for (const auto& [unit, name] :
         {std::pair(1e9, "GB"), std::pair(1e6, "MB"), std::pair(1e3, "kB")})
        if (bytes >= unit)
            return fmt::format("{:.3g} {}", bytes / unit, name);
    return fmt::format("{:.0f} bytes", bytes);
}

std::string stepText(const Step& step, const Plan& plan)
{
    std::string text =
        step.id.empty() ? step.algorithm + "\n" : step.id + ": " + step.algorithm + "\n";
    for (const OptionAssignment& assignment : step.assignments)
        text += "    " + assignment.option + (assignment.isDirect ? " := " : " = ") +
                (assignment.source
                     ? plan.steps.at(assignment.source->step).id + "." + assignment.source->port
                     : assignment.value) +
                "\n";
    return text;
}

std::string loopText(const std::vector<Iteration>& iterations)
{
    constexpr std::size_t few = 6;
    std::vector<std::string> names;
    for (const Iteration& iteration : iterations)
    {
        if (names.size() == few && iterations.size() > few + 1)
        {
            names.emplace_back("...");
            names.push_back(iterations.back().name());
            break;
        }
        names.push_back(iteration.name());
    }
    return fmt::format("repeated {} times: {}\n", iterations.size(), joined(names, ", "));
}

}

std::string previewOf(const PlanRun& run, io::Loader& loader)
{
    const Iteration& first = run.iterations().front();
    const Plan plan = run.planOf(first);
    std::string text;
    for (const Step& step : plan.steps)
        text += stepText(step, plan);
    for (const OutputRequest& request : plan.outputs)
        text += "writes " + request.file.string() + "\n";
    if (!first.name().empty())
        text += loopText(run.iterations());
    return text + "memory for data of files and results on their grids: about " +
           memoryText(estimateBytes(plan, loader)) + "\n";
}

}
