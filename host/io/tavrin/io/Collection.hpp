#pragma once

#include <tavrin/base/Export.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// A list of files: a time series (.pvd, .series), whose steps may have several parts, or the blocks
/// of a multi-block file (.vtm), which are the parts of its only step.
struct Collection
{
    struct Part
    {
        /// "fluid", "walls/inlet", "0".
        std::string name;
        /// As it is written in the list.
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

bool isSeries(const std::filesystem::path& path);
bool isMultiBlock(const std::filesystem::path& path);
/// Either of them.
bool isCollection(const std::filesystem::path& path);

/// The parts of a time series may be multi-block files; no other list may be in a list. Throws
/// `Malformed` for a list that is none, is empty, or has two files for a time and part.
Collection readCollection(const std::filesystem::path& path);

/// The file, and behind it those that it lists, and those that these list. One that is no readable
/// list lists none.
TAVRIN_API std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path);

}
