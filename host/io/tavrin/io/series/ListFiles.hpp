#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::io
{

/// One file that a list of files names.
struct ListedFile
{
    /// 0 in a list of blocks.
    double time = 0.0;
    /// The name of the block: "fluid", "walls/inlet", "0".
    std::string block;
    /// The file as the list writes it.
    std::string file;
};

/// The readers of lists of files return the entries in the order of the list. They throw
/// `Malformed` for a file that is not such a list.

/// A ".pvd" file: XML with a time, and perhaps a part, for each file.
std::vector<ListedFile> readPvdList(const std::filesystem::path& path);

/// A ".series" file: JSON with a time for each file.
std::vector<ListedFile> readJsonList(const std::filesystem::path& path);

/// A ".vtm" file: XML with a tree of blocks; blocks without a file are left out.
std::vector<ListedFile> readMultiBlockList(const std::filesystem::path& path);

}
