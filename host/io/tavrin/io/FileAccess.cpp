#include <tavrin/io/FileAccess.hpp>

#include <tavrin/io/Malformed.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace tavrin::io
{

namespace
{

constexpr std::string_view legacyMarker = "# vtk DataFile";

/// The beginning of a file, behind blanks and a byte order mark.
std::string beginningOf(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string text(256, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    text.erase(0, std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    return text;
}

}

void requireFile(const std::filesystem::path& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        throw Malformed(status.type() == std::filesystem::file_type::not_found ? "no such file"
                                                                               : error.message());
    if (std::filesystem::is_directory(status))
        throw Malformed("is a folder");
    if (!std::filesystem::is_regular_file(status))
        throw Malformed("is not a file of data");
    if (std::filesystem::file_size(path) == 0)
        throw Malformed("is empty");
    errno = 0;
    if (!std::ifstream(path))
        throw Malformed(std::string("cannot be opened: ") + std::strerror(errno));
}

void FileAccess::warn(const std::string& line)
{
    const std::lock_guard lock(mMutex);
    if (mSaid.insert(line).second && mWarn)
        mWarn(line);
}

std::unique_ptr<DataFile> FileAccess::open(const FilePlace& place) const
{
    requireFile(place.path);
    const std::string extension = extensionOf(place.path);
    const std::string beginning = beginningOf(place.path);
    if (extension == ".vtk")
    {
        if (beginning.starts_with("<"))
            throw Malformed("not a legacy VTK file; it looks like a VTK XML file");
        return openLegacyFile(place.path, mAbortFlag);
    }
    if (extension.starts_with(".pvt"))
        throw Malformed(
            "a file that lists the pieces of one grid is not supported; list the pieces "
            "as blocks in a .vtm file");
    static const std::set<std::string> xmlExtensions{".vti", ".vtp", ".vtr", ".vts", ".vtu"};
    if (!xmlExtensions.contains(extension))
        throw Malformed((extension.empty() ? "a file without an extension"
                                           : "a file with the extension " + extension) +
                        " is not supported; supported are .vti, .vtp, .vtr, .vts, .vtu, .vtk, "
                        ".vtm, .pvd and .series");
    if (beginning.starts_with(legacyMarker))
        throw Malformed("not a VTK XML file; it looks like a legacy VTK file, whose extension is "
                        ".vtk");
    if (!beginning.starts_with("<"))
        throw Malformed("not a VTK XML file");
    return openXmlFile(place.path, mAbortFlag);
}

BuiltGrid FileAccess::build(DataFile& file, const FilePlace& place,
                            std::optional<std::size_t> dimension)
{
    BuiltGrid grid = buildGrid(file, dimension, mAbortFlag);
    for (const std::string& warning : grid.warnings)
        warn(place.named.string() + ": " + warning);
    return grid;
}

StoredArray readValues(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid)
{
    StoredArray values = file.readArray(array);
    const auto& origin =
        array.association == Association::Points ? grid.pointOrigin : grid.cellOrigin;
    return origin ? gather(values, *origin) : values;
}

}
