#pragma once

#include <tavrin/base/Export.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::io
{

/// A time series of files, as a .pvd or a .series file lists them.
struct Collection
{
    struct Step
    {
        double time;
        /// As it is written in the list.
        std::string name;
        std::filesystem::path path;
    };

    /// At least one; the times ascend.
    std::vector<Step> steps;
};

bool isCollection(const std::filesystem::path& path);

/// Throws `Malformed` for a list that is none, or has no or two files for a time.
Collection readCollection(const std::filesystem::path& path);

/// The file, and behind it those that it lists. One that is no readable list lists none.
TAVRIN_API std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path);

}
