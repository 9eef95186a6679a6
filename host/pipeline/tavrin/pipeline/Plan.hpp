#pragma once

#include <tavrin/pipeline/OptionAssignment.hpp>
#include <tavrin/pipeline/OutputRequest.hpp>

namespace tavrin::pipeline
{

/// One algorithm to be run, with its options.
struct Step
{
    /// Names the step in references of later steps and in messages; empty if it is the only one.
    std::string id;
    std::string algorithm;
    std::vector<OptionAssignment> assignments;
    /// At most so many values of each function are shown, evenly spread in space; all of them by
    /// default.
    std::optional<std::size_t> maximumArrows = std::nullopt;
};

/// Steps in the order in which they are executed, and the files that are written of their results.
struct Plan
{
    std::vector<Step> steps;
    std::vector<OutputRequest> outputs;
};

/// How often a plan is executed.
struct Loop
{
    enum class Kind
    {
        Once,
        /// For every time step of the series among the inputs, which are restricted to it.
        EachStep,
        /// For every value of a variable.
        Sweep
    };

    Kind kind = Kind::Once;
    /// What a sweep varies.
    std::string variable = {};
    std::vector<std::string> values = {};

    bool isOnce() const { return kind == Kind::Once; }
};

/// One execution of a plan.
struct TAVRIN_API Iteration
{
    std::size_t index = 0;
    /// The number of executions.
    std::size_t count = 1;
    /// In a loop over time steps.
    std::optional<double> time = std::nullopt;
    /// In a sweep: the variable and its value.
    std::string variable = {};
    std::string value = {};

    /// "time 0.5", "Scale 2"; empty outside of a loop.
    std::string name() const;
};

/// The number of values to be shown. Throws `usage_error` for a text that is no whole number from 1.
TAVRIN_API std::size_t parseMaximumArrows(const std::string& text);

/// The values of a set expression such as "[0:1#0.1]" or "1,2,5", as texts that name the numbers
/// exactly. Throws `usage_error` for a malformed expression and for one without values.
TAVRIN_API std::vector<std::string> sweepValues(const std::string& expression);

}
