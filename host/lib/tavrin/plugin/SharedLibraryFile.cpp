#include <tavrin/plugin/SharedLibraryFile.hpp>

#include <elf.h>

#include <cstring>
#include <fstream>
#include <string_view>

namespace tavrin
{

namespace
{

template<typename Header>
bool readHeader(std::ifstream& stream, std::uint64_t offset, Header& header)
{
    stream.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(stream.read(reinterpret_cast<char*>(&header), sizeof(header)));
}

bool isLibraryOfThisMachine(const Elf64_Ehdr& header)
{
    const std::string_view magic(reinterpret_cast<const char*>(header.e_ident), SELFMAG);
    return magic == ELFMAG && header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_type == ET_DYN &&
           header.e_machine == EM_X86_64 && header.e_phentsize == sizeof(Elf64_Phdr);
}

/// Whether everything that the headers speak of lies in the file.
bool isComplete(std::ifstream& stream, const Elf64_Ehdr& header, std::uint64_t fileSize)
{
    const auto lies = [&](std::uint64_t offset, std::uint64_t size)
    { return offset <= fileSize && size <= fileSize - offset; };
    if (!lies(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize))
        return false;
    for (std::size_t i = 0; i < header.e_phnum; ++i)
    {
        Elf64_Phdr segment;
        if (!readHeader(stream, header.e_phoff + i * sizeof(segment), segment) ||
            !lies(segment.p_offset, segment.p_filesz))
            return false;
    }
    return true;
}

}

std::string faultOfSharedLibrary(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return "no such file";
    if (!std::filesystem::is_regular_file(file, error))
        return "not a file";
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return std::strerror(errno);
    Elf64_Ehdr header;
    if (!readHeader(stream, 0, header) || !isLibraryOfThisMachine(header))
        return "not a shared library";
    if (!isComplete(stream, header, std::filesystem::file_size(file, error)))
        return "the library is cut off";
    return {};
}

}
