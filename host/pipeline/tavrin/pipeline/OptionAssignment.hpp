#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/pipeline/DataKinds.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

/// One `NAME=VALUE` or `NAME:=VALUE` for the option of an algorithm.
struct TAVRIN_API OptionAssignment
{
    std::string option;
    /// For a data option the text of the reference; an empty one disconnects the option.
    std::string value;
    /// Whether the validator is bypassed, as `:=` asks for.
    bool isDirect = false;
    /// The reference in the value of a data option, unless the value is empty.
    std::optional<ObjectReference> reference;

    /// Parses one word. NAME is the longest name of an option with which the word begins and that is
    /// followed by `=` or `:=`. Throws `usage_error` for a word without `=`, an unknown name, and a
    /// malformed reference to data.
    static OptionAssignment parse(const std::string& word, const AlgorithmRun& run);
};

/// Parses words as `OptionAssignment::parse` does, and refuses with a `usage_error` an option that is
/// assigned twice unless it takes a bundle.
TAVRIN_API std::vector<OptionAssignment> parseAssignments(const std::vector<std::string>& words,
                                                          const AlgorithmRun& run);

}
