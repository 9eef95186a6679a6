#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::app
{

/// One `-o PORT=FILE` of the command line.
struct OutputRequest
{
    std::string port;
    std::filesystem::path file;
    /// Of a graphics output, or else data.
    bool isGraphics = false;

    /// Whether a picture is to be painted.
    bool isPicture() const { return file.extension() == ".png"; }

    /// `PORT=` may be left out where the algorithm has one output. Throws `usage_error` for an
    /// unknown port, and for a file whose extension is none of those that the port is written as.
    static OutputRequest parse(const std::string& word, const AlgorithmDescription& algorithm);
};

/// Throws `usage_error` as `OutputRequest::parse`, and where an algorithm that delivers data is
/// asked for none of it.
std::vector<OutputRequest> parseOutputs(const std::vector<std::string>& words,
                                        const AlgorithmDescription& algorithm);

/// Refuses, before a run, files that cannot be written after it. Throws `usage_error` for a file
/// that is named twice or is one of the inputs, be it as a step of a series, and `FileError` where the folder is missing or not
/// writable.
void checkDestinations(const std::vector<std::filesystem::path>& destinations,
                       const std::vector<std::filesystem::path>& inputs);

/// Refuses, before a run, formats that suit none of the grids and numbers of time steps of the
/// inputs. Throws `usage_error` naming those that do. Without inputs everything may suit.
void checkFormats(const std::vector<OutputRequest>& requests,
                  const DataObjectBundle::Members& inputs);

}
