#pragma once

#include <tavrin/pipeline/Json.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/pipeline/OptionAssignment.hpp>

#include <filesystem>
#include <span>

namespace tavrin::pipeline
{

/// The measurements and outputs of a run that `--report` writes besides what the run itself holds.
struct TAVRIN_API RunReport
{
    struct Seconds
    {
        double read = 0.0;
        double execute = 0.0;
        double write = 0.0;
    };

    struct Output
    {
        std::string port;
        std::filesystem::path file;
        /// "values" and "timeSteps" of data, "width" and "height" of a picture.
        Json content;
    };

    Seconds seconds;
    std::vector<Output> outputs;

    /// The report as one object. The value of each option is a text, that of a data option the
    /// reference, several references for a bundle, and null without a value.
    Json toJson(const AlgorithmRun& run, std::span<const OptionAssignment> assignments) const;
};

/// The largest amount of memory that the process has used so far; 0 if the system does not tell.
TAVRIN_API std::size_t peakMemoryBytes();

}
