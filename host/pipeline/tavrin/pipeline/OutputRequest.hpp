#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/graphics/Picture.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

/// One `-o PORT=FILE` of the command line.
struct TAVRIN_API OutputRequest
{
    std::string port;
    std::filesystem::path file;
    /// Whether the output is graphics; otherwise it is data.
    bool isGraphics = false;

    /// Whether the file is a picture, not line segments or data.
    bool isPicture() const
    {
        return graphics::pictureFormatOf(file.extension().string()).has_value();
    }

    /// Parses one word. `PORT=` may be left out if the algorithm has one output. Throws
    /// `usage_error` for an unknown port, and for an extension that cannot hold the output.
    static OutputRequest parse(const std::string& word, const AlgorithmDescription& algorithm);
};

/// Parses words as `OutputRequest::parse` does. Throws `usage_error` in addition if an algorithm with
/// outputs is asked for none of them.
TAVRIN_API std::vector<OutputRequest> parseOutputs(const std::vector<std::string>& words,
                                                   const AlgorithmDescription& algorithm);

/// Checks before a run that the files can be written after it. Throws `usage_error` for a file that
/// is named twice or is one of the inputs, possibly as a step of a series, and `FileError` if a file
/// cannot be created or replaced.
TAVRIN_API void checkDestinations(const std::vector<std::filesystem::path>& destinations,
                                  const std::vector<std::filesystem::path>& inputs);

/// Checks before a run that each format can hold at least one of the grids and numbers of time steps
/// of the inputs. Throws `usage_error` that names the formats that can. Without inputs every format
/// passes.
TAVRIN_API void checkFormats(const std::vector<OutputRequest>& requests,
                             const DataObjectBundle::Members& inputs);

}
