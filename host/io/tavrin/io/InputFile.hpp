#pragma once

#include <filesystem>
#include <fstream>

namespace tavrin::io
{

/// A data file that is open for reading, at its beginning.
struct InputFile
{
    /// Throws `Malformed` for a file that cannot be opened.
    explicit InputFile(const std::filesystem::path& file);

    /// The first characters after a byte order mark and blanks. The stream stays at the beginning.
    std::string beginning();

    std::filesystem::path path;
    std::ifstream stream;
    /// The number of bytes.
    std::size_t size;
};

/// Throws `Malformed` unless the path is that of a regular, readable file that is not empty. Does not
/// open the file.
void requireFile(const std::filesystem::path& path);

}
