#pragma once

#include <tavrin/pipeline/Plan.hpp>

#include <tavrin/colormap/ColorMap.hpp>

#include <map>
#include <optional>
#include <set>

namespace tavrin::pipeline
{

/// What the iterations of a loop have in common, so that their results can be compared: color maps
/// without a range span the norms of all iterations, and an option with the value `auto` has the
/// smallest of the suggested values. Found by executing the steps in question once in advance.
class LoopSurvey
{
public:
    /// The steps of a plan that have to be looked at in advance, and those that they depend on.
    static std::set<std::size_t> stepsToSurvey(const Plan& plan);

    /// Whether a color map of the step spans the norms of a field, since its reference has no range.
    static bool needsRange(const Step& step);
    /// Whether an option of the step has the value `auto`.
    static bool needsSuggestions(const Step& step);

    void addNorms(std::size_t step, const ValueRange& norms);
    void addSuggestions(std::size_t step, const std::map<std::string, std::string>& suggestions);

    /// The norms added for a step, or nothing.
    std::optional<ValueRange> norms(std::size_t step) const;
    /// The suggested values for a step, by option.
    const std::map<std::string, std::string>& suggestions(std::size_t step) const;

private:
    std::map<std::size_t, ValueRange> mNorms;
    std::map<std::size_t, std::map<std::string, std::string>> mSuggestions;
};

}
