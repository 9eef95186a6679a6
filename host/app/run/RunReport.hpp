#pragma once

#include "../text/Json.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <filesystem>

namespace tavrin::app
{

/// What `--report` tells of a run.
struct RunReport
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
        /// What was written: "values" and "timeSteps" of data, "width" and "height" of a picture.
        Json content;
    };

    std::string algorithm;
    /// The value of each option by its name, as text; null without one, several for a bundle.
    Json options = Json::object();
    Seconds seconds;
    std::string infoLog;
    std::string debugLog;
    std::vector<Output> outputs;
    /// What the algorithm reported.
    ReportValue::Members results;

    Json toJson() const;
};

/// The largest amount of memory that the process has used so far; 0 where it is not known.
std::size_t peakMemoryBytes();

}
