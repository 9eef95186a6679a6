#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

/// One `NAME=VALUE` or `NAME:=VALUE` of the command line.
struct TAVRIN_API OptionAssignment
{
    std::string option;
    std::string value;
    /// `:=`, past the validator.
    bool isDirect = false;

    /// NAME is the longest name of an option that the word begins with, up to its `=`.
    /// Throws `usage_error` for a word without `=`, and for an unknown name.
    static OptionAssignment parse(const std::string& word, const AlgorithmRun& run);
};

/// Throws `usage_error` as `OptionAssignment::parse`, and for an option that is assigned twice and
/// takes one value.
TAVRIN_API std::vector<OptionAssignment> parseAssignments(const std::vector<std::string>& words,
                                                          const AlgorithmRun& run);

}
