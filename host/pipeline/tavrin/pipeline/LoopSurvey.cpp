#include <tavrin/pipeline/LoopSurvey.hpp>

#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <cmath>

namespace tavrin::pipeline
{

namespace
{

/// The value nearer to 0; the first where one is not a number.
const std::string& smaller(const std::string& a, const std::string& b)
{
    try
    {
        return std::abs(lexicalCast<double>(b)) < std::abs(lexicalCast<double>(a)) ? b : a;
    }
    catch (const bad_lexical_cast&)
    {
        return a;
    }
}

/// Adds the steps whose results a step takes, and those that these depend on.
void addSources(std::size_t step, const Plan& plan, std::set<std::size_t>& steps)
{
    for (const OptionAssignment& assignment : plan.steps[step].assignments)
        if (assignment.source && steps.insert(assignment.source->step).second)
            addSources(assignment.source->step, plan, steps);
}

}

std::set<std::size_t> LoopSurvey::stepsToSurvey(const Plan& plan)
{
    std::set<std::size_t> steps;
    for (std::size_t i = 0; i < plan.steps.size(); ++i)
    {
        if (!needsRange(plan.steps[i]) && !needsSuggestions(plan.steps[i]))
            continue;
        steps.insert(i);
        addSources(i, plan, steps);
    }
    return steps;
}

bool LoopSurvey::needsRange(const Step& step)
{
    return std::ranges::any_of(
        step.assignments, [](const OptionAssignment& assignment)
        { return assignment.reference && assignment.reference->spansShownNorms(); });
}

bool LoopSurvey::needsSuggestions(const Step& step)
{
    return std::ranges::any_of(step.assignments, &OptionAssignment::isAutomatic);
}

void LoopSurvey::addNorms(std::size_t step, const ValueRange& norms)
{
    const auto [entry, isNew] = mNorms.try_emplace(step, norms);
    if (isNew)
        return;
    entry->second.low = std::min(entry->second.low, norms.low);
    entry->second.high = std::max(entry->second.high, norms.high);
}

void LoopSurvey::addSuggestions(std::size_t step,
                                const std::map<std::string, std::string>& suggestions)
{
    auto& known = mSuggestions[step];
    for (const auto& [option, value] : suggestions)
    {
        const auto [entry, isNew] = known.try_emplace(option, value);
        if (!isNew)
            entry->second = smaller(entry->second, value);
    }
}

std::optional<ValueRange> LoopSurvey::norms(std::size_t step) const
{
    const auto entry = mNorms.find(step);
    return entry == mNorms.end() ? std::nullopt : std::optional(entry->second);
}

const std::map<std::string, std::string>& LoopSurvey::suggestions(std::size_t step) const
{
    static const std::map<std::string, std::string> none;
    const auto entry = mSuggestions.find(step);
    return entry == mSuggestions.end() ? none : entry->second;
}

}
