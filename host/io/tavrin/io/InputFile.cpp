#include <tavrin/io/InputFile.hpp>

#include <tavrin/io/Malformed.hpp>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace tavrin::io
{

InputFile::InputFile(const std::filesystem::path& file) : path(file)
{
    requireFile(path);
    errno = 0;
    stream.open(path, std::ios::binary);
    if (!stream)
        throw Malformed(std::string("cannot be opened: ") + std::strerror(errno));
    size = std::filesystem::file_size(path);
}

std::string InputFile::beginning()
{
    std::string text(256, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    stream.clear();
    stream.seekg(0);
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    text.erase(0, std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    return text;
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
        throw Malformed("is not a regular file");
    if (std::filesystem::file_size(path) == 0)
        throw Malformed("is empty");
    if (access(path.c_str(), R_OK) != 0)
        throw Malformed(std::string("cannot be opened: ") + std::strerror(errno));
}

}
