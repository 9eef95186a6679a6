#include <tavrin/plugin/SharedLibraryFile.hpp>

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

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

std::vector<Elf64_Phdr> readSegments(std::ifstream& stream, const Elf64_Ehdr& header)
{
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    for (std::size_t i = 0; i < segments.size(); ++i)
        if (!readHeader(stream, header.e_phoff + i * sizeof(Elf64_Phdr), segments[i]))
            return {};
    return segments;
}

/// Whether everything that the headers describe lies in the file.
bool isComplete(const Elf64_Ehdr& header, const std::vector<Elf64_Phdr>& segments,
                std::uint64_t fileSize)
{
    const auto lies = [&](std::uint64_t offset, std::uint64_t size)
    { return offset <= fileSize && size <= fileSize - offset; };
    return segments.size() == header.e_phnum &&
           lies(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize) &&
           std::ranges::all_of(segments, [&](const Elf64_Phdr& segment)
                               { return lies(segment.p_offset, segment.p_filesz); });
}

/// The names of the libraries that the library needs.
std::vector<std::string> neededLibraries(std::ifstream& stream,
                                         const std::vector<Elf64_Phdr>& segments)
{
    const auto dynamic = std::ranges::find(segments, Elf64_Word{PT_DYNAMIC}, &Elf64_Phdr::p_type);
    if (dynamic == segments.end())
        return {};
    std::uint64_t nameTable = 0;
    std::vector<std::uint64_t> names;
    for (std::uint64_t at = 0; at + sizeof(Elf64_Dyn) <= dynamic->p_filesz; at += sizeof(Elf64_Dyn))
    {
        Elf64_Dyn entry;
        if (!readHeader(stream, dynamic->p_offset + at, entry) || entry.d_tag == DT_NULL)
            break;
        if (entry.d_tag == DT_NEEDED)
            names.push_back(entry.d_un.d_val);
        if (entry.d_tag == DT_STRTAB)
            nameTable = entry.d_un.d_ptr;
    }
    // The table is given by its address in memory.
    for (const Elf64_Phdr& segment : segments)
        if (segment.p_type == PT_LOAD && nameTable >= segment.p_vaddr &&
            nameTable - segment.p_vaddr < segment.p_filesz)
        {
            nameTable = nameTable - segment.p_vaddr + segment.p_offset;
            break;
        }
    std::vector<std::string> libraries;
    for (const std::uint64_t name : names)
    {
        stream.seekg(static_cast<std::streamoff>(nameTable + name));
        std::getline(stream, libraries.emplace_back(), '\0');
        stream.clear();
    }
    return libraries;
}

/// What is wrong with a library that was built for another interface of the host. The version is
/// part of the name under which it asks for the host's library.
std::string faultOfInterface(const std::vector<std::string>& libraries)
{
    const std::string host = "libtavrin-lib.so";
    const std::string version = TAVRIN_INTERFACE_VERSION;
    const std::string ownName = host + '.' + version;
    for (const std::string& library : libraries)
        if (library.starts_with(host) && library != ownName)
            return "built for interface version " +
                   (library == host ? "0" : library.substr(host.size() + 1)) +
                   " of tavrin, and this is version " + version + "; build it again";
    return {};
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
    const auto segments = readSegments(stream, header);
    if (!isComplete(header, segments, std::filesystem::file_size(file, error)))
        return "the library is truncated";
    return faultOfInterface(neededLibraries(stream, segments));
}

}
