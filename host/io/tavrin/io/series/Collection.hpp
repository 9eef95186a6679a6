#pragma once

#include <tavrin/base/Export.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// A list of files: a time series, whose steps may have several parts, or the blocks of a
/// multi-block file, which are the parts of its only step.
struct Collection
{
    struct Part
    {
        /// "fluid", "walls/inlet", "0".
        std::string name;
        /// The file as the list writes it.
        std::string file;
        std::filesystem::path path;
    };

    struct Step
    {
        /// None in a multi-block file.
        std::optional<double> time;
        /// At least one, in the order of the list.
        std::vector<Part> parts;
    };

    /// At least one; the times ascend.
    std::vector<Step> steps;
};

/// Reads a list of files. The parts of a time series may be multi-block files; no other list may be
/// in a list. Throws `Malformed` for a file that is not a list, for an empty list, and for a list
/// with two files for one time and part.
Collection readCollection(const std::filesystem::path& path);

}
