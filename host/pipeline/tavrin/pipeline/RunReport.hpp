#pragma once

#include <tavrin/pipeline/Json.hpp>
#include <tavrin/pipeline/Plan.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>

namespace tavrin::pipeline
{

/// The version of the reports. It grows when the meaning of a part changes or a part is removed.
inline constexpr int reportFormatVersion = 1;

/// A file that was written.
struct OutputReport
{
    std::string port;
    std::filesystem::path file;
    /// "values" and "timeSteps" of data, "width" and "height" of a picture.
    Json content;
};

/// What was measured while an algorithm ran, besides what the run itself holds.
struct RunMeasurements
{
    struct Seconds
    {
        double read = 0.0;
        double execute = 0.0;
        double write = 0.0;
    };

    Seconds seconds = {};
    std::vector<OutputReport> outputs = {};
};

/// The report on a run as one object. The value of each option is a text, that of a data option the
/// reference or the output of a step, several for a bundle, and null without a value. `plan` names
/// the steps.
TAVRIN_API Json reportOn(const AlgorithmRun& run, const Step& step, const Plan& plan,
                         const RunMeasurements& measurements);

/// The largest amount of memory that the process has used so far; 0 if the system does not tell.
TAVRIN_API std::size_t peakMemoryBytes();

}
