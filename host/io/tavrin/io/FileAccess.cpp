#include <tavrin/io/FileAccess.hpp>

#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/Formats.hpp>
#include <tavrin/io/Malformed.hpp>

#include <algorithm>
#include <chrono>

namespace tavrin::io
{

namespace
{

/// The data files that stay open for later requests: enough for the inputs of an algorithm, and few
/// open files.
constexpr std::size_t maximumOpenedFiles = 4;

/// Throws `Malformed` unless the file begins as those of the format do. The text names the format
/// that the file seems to have instead.
void requireBeginning(InputFile& file, const FileFormat& format)
{
    const std::string beginning = file.beginning();
    if (beginning.starts_with(format.beginning))
        return;
    std::string cause = "not a " + std::string(format.family) + " file";
    std::vector<const FileFormat*> similar;
    for (const FileFormat& other : fileFormats())
        if (!other.beginning.empty() && beginning.starts_with(other.beginning))
            similar.push_back(&other);
    if (!similar.empty())
        cause += "; it looks like a " + std::string(similar.front()->family) + " file";
    if (similar.size() == 1)
        cause += ", whose extension is " + std::string(similar.front()->extension);
    throw Malformed(cause);
}

const FileFormat& requireFormat(const std::filesystem::path& path)
{
    const std::string extension = extensionOf(path);
    if (extension.starts_with(".pvt"))
        throw Malformed("a file that lists the pieces of one grid is not supported; list the "
                        "pieces as blocks in a .vtm file");
    const FileFormat* const format = findFormat(path);
    if (format == nullptr || format->open == nullptr)
        throw Malformed((extension.empty() ? "a file without an extension"
                                           : "a file with the extension " + extension) +
                        " is not supported; supported are " +
                        enumerate(readableExtensions(), "and"));
    return *format;
}

/// The text with each number replaced by "#", so that warnings of one kind are equal.
std::string withoutNumbers(const std::string& text)
{
    constexpr std::string_view digits = "0123456789";
    std::string result;
    for (std::size_t i = 0; i < text.size();)
    {
        if (digits.find(text[i]) == digits.npos)
        {
            result += text[i++];
            continue;
        }
        result += '#';
        i = std::min(text.find_first_not_of("0123456789.e+-", i), text.size());
    }
    return result;
}

}

void FileAccess::warn(const std::filesystem::path& file, const std::string& text)
{
    const std::lock_guard lock(mMutex);
    const std::string kind = file.string() + ": " + withoutNumbers(text);
    const auto [warning, isNew] = mWarnings.try_emplace(kind);
    if (isNew)
    {
        warning->second.line = file.string() + ": " + cleanLine(text);
        mNewWarnings.push_back(kind);
    }
    else if (warning->second.line != file.string() + ": " + cleanLine(text))
        ++warning->second.repetitions;
    if (!mHoldsWarnings)
        passOnWarnings();
}

void FileAccess::holdWarnings()
{
    const std::lock_guard lock(mMutex);
    mHoldsWarnings = true;
}

void FileAccess::releaseWarnings()
{
    const std::lock_guard lock(mMutex);
    mHoldsWarnings = false;
    passOnWarnings();
}

void FileAccess::passOnWarnings()
{
    for (const std::string& kind : mNewWarnings)
    {
        const auto& [line, repetitions] = mWarnings[kind];
        if (mWarn)
            mWarn(repetitions == 0
                      ? line
                      : line + " (and " + std::to_string(repetitions) + " more like this)");
    }
    mNewWarnings.clear();
}

const Collection& FileAccess::collection(const std::filesystem::path& path)
{
    const auto known = mCollections.find(path);
    if (known != mCollections.end())
        return known->second;
    requireFile(path);
    return mCollections.emplace(path, readCollection(path)).first->second;
}

std::vector<std::filesystem::path> FileAccess::filesOf(const std::filesystem::path& path)
{
    std::vector files{path};
    if (!isList(path))
        return files;
    try
    {
        for (const Collection::Step& step : collection(path).steps)
            for (const Collection::Part& part : step.parts)
                std::ranges::move(filesOf(part.path), std::back_inserter(files));
    }
    catch (const Malformed&)
    {
        // The function that loads the list reports what is wrong with it.
    }
    return files;
}

std::unique_ptr<DataFile> FileAccess::open(const FilePlace& place) const
{
    if (place.container != nullptr)
        return place.container->openStep(place.stepInFile);
    requireFile(place.path);
    const FileFormat& format = requireFormat(place.path);
    InputFile file(place.path);
    requireBeginning(file, format);
    auto opened = format.open(format, std::move(file), mAbortFlag);
    if (!opened->stepTimes.empty() && !place.member.empty())
        throw Malformed("holds several time steps and cannot be one file of a list");
    return opened;
}

std::shared_ptr<DataFile> FileAccess::openAgain(const FilePlace& place)
{
    if (place.container != nullptr)
        return open(place);
    requireFile(place.path);
    const auto changed = std::filesystem::last_write_time(place.path);
    const auto size = std::filesystem::file_size(place.path);
    const auto known = std::ranges::find_if(
        mOpened, [&](const OpenedFile& opened)
        { return opened.path == place.path && opened.changed == changed && opened.size == size; });
    if (known != mOpened.end())
    {
        mOpened.splice(mOpened.begin(), mOpened, known);
        return known->file;
    }
    std::shared_ptr<DataFile> file = open(place);
    // Clocks of file systems are coarse: a file that has just changed may change again unnoticed.
    if (std::filesystem::file_time_type::clock::now() - changed > std::chrono::seconds(1))
        mOpened.push_front({place.path, changed, size, file});
    if (mOpened.size() > maximumOpenedFiles)
        mOpened.pop_back();
    return file;
}

BuiltGrid FileAccess::build(DataFile& file, const FilePlace& place,
                            std::optional<std::size_t> dimension)
{
    BuiltGrid grid = buildGrid(file, dimension, mAbortFlag);
    for (const std::string& warning : grid.warnings)
        warn(place.named, warning);
    return grid;
}

StoredArray readValues(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid)
{
    StoredArray values = file.readArray(array);
    const auto& origin = originOf(grid, array.association);
    return origin == nullptr ? values : gather(values, *origin);
}

const std::shared_ptr<const std::vector<std::size_t>>& originOf(const BuiltGrid& grid,
                                                                Association association)
{
    return association == Association::Points ? grid.pointOrigin : grid.cellOrigin;
}

ValidityMask readValidity(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid)
{
    const DataFile::Array* const mask = findValidityMask(file.arrays, array);
    if (mask == nullptr)
        return {};
    const StoredArray marks = readValues(file, *mask, grid);
    ValidityMask validity(marks.tuples);
    visitPrecision(marks.precision,
                   [&]<typename Stored>()
                   {
                       for (std::size_t i = 0; i < marks.tuples; ++i)
                           validity[i] = marks.as<Stored>()[i] == Stored{0} ? 0 : 1;
                   });
    return validity;
}

}
