#include <tavrin/io/write/SeriesNames.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>
#include <tavrin/io/XmlText.hpp>
#include <tavrin/io/series/ListFiles.hpp>
#include <tavrin/io/write/TemporaryName.hpp>

#include <fmt/format.h>

#include <fstream>

namespace tavrin::io
{

namespace fs = std::filesystem;

SeriesNames::SeriesNames(const fs::path& file)
    : mFile(followLinks(file)), mStem(toXmlText(mFile.stem().string())),
      mFolder(mFile.parent_path() / mStem)
{
}

std::string SeriesNames::member(std::size_t step, std::string_view extension) const
{
    return fmt::format("{}_{:04}{}", mStem, step, extension);
}

bool SeriesNames::isMember(const std::string& name) const
{
    const FileFormat* const format = findFormat(name);
    const std::string stem = fs::path(name).stem().string();
    return format != nullptr && format->makeWriter != nullptr && stem.starts_with(mStem + '_') &&
           stem.size() >= mStem.size() + 5 &&
           stem.find_first_not_of("0123456789", mStem.size() + 1) == std::string::npos;
}

const std::set<std::string>& SeriesNames::listed() const
{
    if (mListed)
        return *mListed;
    mListed.emplace();
    std::error_code ignored;
    try
    {
        if (fs::exists(mFile, ignored))
            for (const ListedFile& listed : readPvdList(mFile))
            {
                const std::string name = fs::path(listed.file).filename().string();
                if (isMember(name) && listed.file == reference(name))
                    mListed->insert(name);
            }
    }
    catch (const Malformed&)
    {
        // A file that is not such a list owns no steps.
    }
    return *mListed;
}

bool SeriesNames::mayReplace(const std::string& member) const
{
    return listed().contains(member) || isMarkedAsStep(mFolder / member);
}

std::set<std::string> SeriesNames::findReplaceable(const std::set<std::string>& newMembers) const
{
    std::set<std::string> replaceable = listed();
    std::error_code ignored;
    const bool hasList = fs::exists(mFile, ignored);
    for (const auto& entry : fs::directory_iterator(mFolder, ignored))
    {
        const std::string name = entry.path().filename().string();
        const bool mayBeOurs = hasList ? newMembers.contains(name) : isMember(name);
        if (mayBeOurs && mayReplace(name))
            replaceable.insert(name);
    }
    return replaceable;
}

bool isMarkedAsStep(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string end(stepMark.size(), '\0');
    stream.seekg(-static_cast<std::streamoff>(end.size()), std::ios::end);
    return stream.read(end.data(), static_cast<std::streamsize>(end.size())) && end == stepMark;
}

bool isStepOf(const fs::path& file, const fs::path& series)
{
    const FileFormat* const format = findFormat(series);
    if (format == nullptr || format->startSeries == nullptr || !isSeries(series))
        return false;
    std::error_code ignored;
    const SeriesNames names(series);
    return names.isMember(file.filename().string()) &&
           fs::equivalent(folderOf(file), names.folder(), ignored);
}

}
