#include "FileCandidates.hpp"

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/Loader.hpp>
#include <tavrin/pipeline/Words.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace tavrin::app
{

namespace
{

namespace fs = std::filesystem;
using io::FileInfo;

bool hasExtension(const fs::path& file, std::span<const std::string> extensions)
{
    std::string name = file.filename().string();
    std::ranges::transform(name, name.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::ranges::any_of(extensions, [&](const std::string& extension)
                               { return name.ends_with(extension); });
}

bool isFile(const std::string& typed)
{
    std::error_code error;
    return fs::is_regular_file(expandedPath(typed), error);
}

/// The length of the file name at the start of a reference, or of the whole text if it names none.
std::size_t lengthOfFile(const std::string& typed)
{
    for (std::size_t end = typed.size(); end != 0 && end != std::string::npos;
         end = typed.find_last_of("#?", end - 1))
        if (isFile(typed.substr(0, end)))
            return end;
    return typed.size();
}

Candidates arrayCandidates(const FileInfo& info)
{
    Candidates candidates;
    for (const FileInfo::Array& array : info.arrays)
    {
        const bool isAmbiguous =
            std::ranges::count(info.arrays, array.name, &FileInfo::Array::name) > 1;
        const std::string association(nameOf(array.association));
        candidates.push_back({array.name + (isAmbiguous ? "?on=" + association : ""),
                              array.valueType + " on " + association});
    }
    return candidates;
}

/// The values of a key, as far as they can be listed.
std::vector<std::string> valuesOf(const io::ReferenceKey& key, const FileInfo& info)
{
    std::vector<std::string> values = key.values;
    if (key.name == "time")
        std::ranges::transform(info.timeSteps, std::back_inserter(values), pipeline::shortestText);
    if (key.name == "block")
        std::ranges::transform(info.blocks, std::back_inserter(values), &FileInfo::block);
    return values;
}

/// Candidates for what follows the "?" of a reference.
Candidates keyCandidates(const std::string& typed, const FileInfo& info)
{
    const auto ampersand = typed.rfind('&');
    const std::size_t first = ampersand == std::string::npos ? 0 : ampersand + 1;
    const std::string before = '&' + typed.substr(0, first);
    Candidates candidates;
    for (const io::ReferenceKey& key : io::referenceKeys())
    {
        const std::string start = key.name + '=';
        const std::string last = typed.substr(first);
        if (last.starts_with(start))
            append(candidates, withPrefix(start, beginningWith(last.substr(start.size()),
                                                               valuesOf(key, info))));
        else if (start.starts_with(last) && before.find('&' + start) == std::string::npos)
            candidates.push_back({start, {}, false});
    }
    return withPrefix(typed.substr(0, first), candidates);
}

}

fs::path expandedPath(const std::string& typed)
{
    const char* const home = std::getenv("HOME");
    return home != nullptr && typed.starts_with("~/") ? home + typed.substr(1) : typed;
}

Candidates fileCandidates(const std::string& typed, std::span<const std::string> extensions)
{
    const auto slash = typed.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : typed.substr(0, slash + 1);
    const std::string start = typed.substr(folder.size());
    Candidates candidates;
    std::error_code error;
    const fs::path listed = folder.empty() ? fs::path(".") : expandedPath(folder);
    for (fs::directory_iterator entry(listed, error), end; !error && entry != end;
         entry.increment(error))
    {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(start) || (name.starts_with('.') && !start.starts_with('.')))
            continue;
        std::error_code statusError;
        if (entry->is_directory(statusError))
            candidates.push_back({folder + name + '/', {}, false});
        else if (hasExtension(name, extensions))
            candidates.push_back({folder + name});
    }
    std::ranges::sort(candidates, {}, &Candidate::word);
    return candidates;
}

Candidates referenceCandidates(const std::string& typed, bool takesArray,
                               const volatile bool& abortFlag)
{
    const std::size_t length = lengthOfFile(typed);
    Candidates candidates;
    if (length == typed.size())
        candidates = fileCandidates(typed, io::readableExtensions());
    const std::string file = typed.substr(0, length);
    if (!isFile(file))
        return candidates;
    try
    {
        io::DataReference reference;
        reference.file = expandedPath(file);
        const FileInfo info = io::Loader([](const std::string&) {}, abortFlag).inspect(reference);
        const std::string rest = typed.substr(length);
        if (takesArray)
            for (const Candidate& array : withPrefix("#", arrayCandidates(info)))
                if (array.word.starts_with(rest))
                    append(candidates, withPrefix(file, {array}));
        if (const auto question = rest.rfind('?'); question != std::string::npos)
            append(candidates, withPrefix(file + rest.substr(0, question + 1),
                                          keyCandidates(rest.substr(question + 1), info)));
    }
    catch (const std::exception&)
    {
        // A file that cannot be read has nothing to offer.
    }
    return candidates;
}

}
