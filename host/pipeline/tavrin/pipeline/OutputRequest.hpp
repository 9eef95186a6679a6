#pragma once

#include <tavrin/pipeline/Picture.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

struct Iteration;

/// A file that is to be written of what a step publishes on one of its outputs.
struct TAVRIN_API OutputRequest
{
    /// The index of the step in its plan.
    std::size_t step = 0;
    std::string port = {};
    /// In a loop, one place such as "%04d" in the name of the file stands for the number of the
    /// iteration, from 0.
    std::filesystem::path file = {};
    /// The name of the array in a data file; by default that of the function.
    std::string arrayName = {};
    /// Whether the output is graphics; otherwise it is data.
    bool isGraphics = false;
    PictureWords picture = {};

    /// Whether the file is a picture, not line segments or data.
    bool isPicture() const;

    /// The file of an iteration.
    std::filesystem::path fileFor(const Iteration& iteration) const;

    /// Makes a request from "FILE" or "FILE#NAME", NAME being the name of the array. Throws
    /// `usage_error` for an extension that cannot hold the output.
    static OutputRequest make(const AlgorithmDescription::Output& output,
                              const std::string& target);

    /// Parses "PORT=FILE" or "PORT=FILE#NAME". `PORT=` may be left out if the algorithm has one
    /// output, and PORT may be abbreviated as in `matchingName`. Throws as `make`, and for an unknown
    /// port.
    static OutputRequest parse(const std::string& word, const AlgorithmDescription& algorithm);
};

/// Whether the name of a file has a place for the number of an iteration, such as "%04d". Throws
/// `usage_error` for a name with several such places.
TAVRIN_API bool hasNumberPlace(const std::filesystem::path& file);

/// Parses words as `OutputRequest::parse` does. Throws `usage_error` in addition if an algorithm with
/// outputs is asked for none of them.
TAVRIN_API std::vector<OutputRequest> parseOutputs(const std::vector<std::string>& words,
                                                   const AlgorithmDescription& algorithm);

}
