#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/pipeline/DataKinds.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

/// What an earlier step of a pipeline publishes on an output.
struct StepOutput
{
    std::size_t step;
    std::string port;
};

/// A word `NAME=VALUE` or `NAME:=VALUE` in its parts.
struct DividedAssignment
{
    /// The name of an option, or what stands in its place if that is none.
    std::string option;
    std::string value;
    bool isDirect;

    /// NAME is the longest name of an option with which the word begins and that is followed by `=` or
    /// `:=`, or an abbreviation of a name, as in `matchingName`. Throws `usage_error` for a word without
    /// `=` and an abbreviation of several names.
    TAVRIN_API static DividedAssignment divide(const std::string& word,
                                               const std::vector<std::string>& optionNames);
};

/// One `NAME=VALUE` or `NAME:=VALUE` for the option of an algorithm.
struct TAVRIN_API OptionAssignment
{
    std::string option;
    /// For a data option the text of the reference; an empty one disconnects the option.
    std::string value;
    /// Whether the validator is bypassed, as `:=` asks for.
    bool isDirect = false;
    /// Whether the value is the one that the algorithm suggests, as `auto` asks for.
    bool isAutomatic = false;
    /// The reference in the value of a data option, unless the value is empty or names a step.
    std::optional<ObjectReference> reference = std::nullopt;
    /// The step whose result the data option takes.
    std::optional<StepOutput> source = std::nullopt;

    /// Makes the assignment of a value to an option. The value `auto` of a number, color or boolean
    /// stands for the suggested value, and a choice may be abbreviated, unless `isDirect`. Throws
    /// `usage_error` for an unknown option and for a malformed reference to data.
    static OptionAssignment make(std::string option, std::string value, bool isDirect,
                                 const AlgorithmRun& run);

    /// Parses one word. Throws as `DividedAssignment::divide` and `make`.
    static OptionAssignment parse(const std::string& word, const AlgorithmRun& run);
};

/// The names of all options, in order.
TAVRIN_API std::vector<std::string> optionNames(const AlgorithmDescription& algorithm);

/// Parses words as `OptionAssignment::parse` does, and refuses with a `usage_error` an option that is
/// assigned twice unless it takes a bundle.
TAVRIN_API std::vector<OptionAssignment> parseAssignments(const std::vector<std::string>& words,
                                                          const AlgorithmRun& run);

}
