#include <tavrin/io/write/SeriesWriter.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/write/FileBuffer.hpp>
#include <tavrin/io/write/SeriesNames.hpp>
#include <tavrin/io/write/StepWriter.hpp>
#include <tavrin/io/write/TemporaryName.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

using Names = std::set<std::string>;

/// Whether anything has the name, including a link that leads nowhere.
bool isTaken(const fs::path& file)
{
    std::error_code ignored;
    return fs::exists(fs::symlink_status(file, ignored));
}

/// Throws `FileError` where a member of the series would replace a file that is not a step of an
/// earlier series of the name.
void requireReplaceable(const fs::path& file, const fs::path& folder, const Names& members,
                        const Names& replaceable)
{
    std::error_code ignored;
    if (!isTaken(folder))
        return;
    if (!fs::is_directory(folder, ignored))
        throw FileError(file,
                        folder.string() + ", where the files of its steps belong, is not a folder");
    const auto foreign =
        std::ranges::find_if(members, [&](const std::string& member)
                             { return !replaceable.contains(member) && isTaken(folder / member); });
    if (foreign != members.end())
        throw FileError(file, (folder / *foreign).string() +
                                  " exists and belongs to another data set; remove it or choose "
                                  "another name");
}

/// A folder for the files of a series until they are published.
class TemporaryFolder
{
public:
    /// Beside the folder that it may replace. Throws `FileError` that names `file`.
    TemporaryFolder(const fs::path& file, const fs::path& replaced)
    {
        const fs::path parent = folderOf(replaced);
        removeAbandoned(parent);
        int result = 0;
        do
        {
            mPath = temporaryName(parent);
            result = mkdir(mPath.c_str(), 0777);
        } while (result != 0 && errno == EEXIST);
        if (result != 0)
            throw FileError(file, std::generic_category().message(errno));
        mDescriptor = open(mPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        claimTemporary(mDescriptor);
        // Nobody may look into it who may not look into the folder that it replaces.
        std::error_code ignored;
        const fs::file_status existing = fs::status(replaced, ignored);
        if (fs::is_directory(existing))
            fs::permissions(mPath, existing.permissions(), ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Removes members only: after publishing, this may be the folder of the earlier series, and a
    /// file that somebody has just put there stays.
    ~TemporaryFolder()
    {
        removeMembers(mPath);
        close(mDescriptor);
    }

    const fs::path& path() const { return mPath; }

    /// Waits until all files have reached the disk: once for all of them, which for many small files
    /// is far faster than once for each. Returns an error number, or 0.
    int synchronize() const { return syncfs(mDescriptor) == 0 ? 0 : errno; }

private:
    fs::path mPath;
    int mDescriptor = -1;
};

bool exchange(const fs::path& a, const fs::path& b)
{
    return renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

bool holdsOnly(const fs::path& folder, const Names& names)
{
    return std::ranges::all_of(fs::directory_iterator(folder), [&](const fs::directory_entry& entry)
                               { return names.contains(entry.path().filename().string()); });
}

/// Moves the members from the temporary folder to `folder`: the whole folder where there is no other
/// or only one with members of the earlier series, and otherwise each file, among the others.
void moveToFolder(const fs::path& temporary, const fs::path& folder, const Names& members,
                  const Names& replaceable)
{
    if (!isTaken(folder))
        return fs::rename(temporary, folder);
    const bool isOurs = !fs::is_symlink(folder) && holdsOnly(folder, replaceable);
    if (isOurs && exchange(temporary, folder))
        return;
    for (const std::string& member : members)
        fs::rename(temporary / member, folder / member);
}

/// A series whose steps are in a temporary folder.
class PendingSeries final : public PendingFile
{
public:
    PendingSeries(const SeriesRequest& request, const FileFormat& memberFormat,
                  const volatile bool& abortFlag)
        : mFile(request.file), mNames(request.file), mAbortFlag(abortFlag),
          mCollection(request.file, abortFlag)
    {
        const std::size_t numSteps = request.function.numTimeSteps();
        for (std::size_t step = 0; step < numSteps; ++step)
            mMembers.insert(mNames.member(step, memberFormat.extension));
        mReplaceable = mNames.findReplaceable(mMembers);
        requireReplaceable(mFile, mNames.folder(), mMembers, mReplaceable);
        mTemporary = std::make_unique<TemporaryFolder>(mFile, mNames.folder());
    }

    /// Writes the files that `publish` puts in place.
    void write(const SeriesRequest& request, const FileFormat& memberFormat)
    {
        const FunctionBase& function = request.function;
        const auto writer = memberFormat.makeWriter(*function.domain(), mAbortFlag);
        const std::vector<NamedFunction> functions{{function, request.arrayName}};
        for (std::size_t step = 0; step < function.numTimeSteps(); ++step)
            writeMember(mTemporary->path() / mNames.member(step, memberFormat.extension),
                        [&](std::ostream& stream) { writer->write(functions, step, stream); });
        // A file system in memory has nothing to synchronize, and may say so by an error.
        if (const int error = mTemporary->synchronize();
            error != 0 && error != EINVAL && error != EROFS)
            fail(error);
        writeCollection(function.timeSteps(), memberFormat.extension);
        mCollection.complete();
    }

    void publish() override
    {
        try
        {
            moveToFolder(mTemporary->path(), mNames.folder(), mMembers, mReplaceable);
        }
        catch (const fs::filesystem_error& error)
        {
            fail(error.code().value());
        }
        mCollection.publish();
        std::error_code ignored;
        for (const std::string& member : mReplaceable)
            if (!mMembers.contains(member))
                fs::remove(mNames.folder() / member, ignored);
    }

private:
    void writeMember(const fs::path& path, const auto& writeContent)
    {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0)
            fail(errno);
        FileBuffer buffer(descriptor, mAbortFlag);
        std::ostream stream(&buffer);
        try
        {
            writeContent(stream);
        }
        catch (...)
        {
            close(descriptor);
            throw;
        }
        stream << stepMark << std::flush;
        const bool isClosed = close(descriptor) == 0;
        if (mAbortFlag)
            throw Aborted();
        if (!stream || !isClosed)
            fail(buffer.error() != 0 ? buffer.error() : EIO);
    }

    void writeCollection(const std::vector<double>& timeSteps, std::string_view memberExtension)
    {
        pugi::xml_document document;
        auto root = document.append_child("VTKFile");
        root.append_attribute("type") = "Collection";
        root.append_attribute("version") = "0.1";
        auto collection = root.append_child("Collection");
        for (std::size_t step = 0; step < mMembers.size(); ++step)
        {
            auto member = collection.append_child("DataSet");
            const double time = timeSteps.empty() ? 0.0 : timeSteps[step];
            member.append_attribute("timestep") = toText(time).c_str();
            member.append_attribute("part") = 0;
            member.append_attribute("file") =
                mNames.reference(mNames.member(step, memberExtension)).c_str();
        }
        document.save(mCollection.stream(), "  ");
    }

    [[noreturn]] void fail(int error) const
    {
        throw FileError(mFile, std::generic_category().message(error));
    }

    fs::path mFile;
    SeriesNames mNames;
    const volatile bool& mAbortFlag;
    OutputFile mCollection;
    Names mMembers;
    Names mReplaceable;
    std::unique_ptr<TemporaryFolder> mTemporary;
};

}

std::unique_ptr<PendingFile> prepareSeries(const SeriesRequest& request,
                                           const volatile bool& abortFlag)
{
    const FileFormat& memberFormat = bestGridFormat(*request.function.domain());
    auto series = std::make_unique<PendingSeries>(request, memberFormat, abortFlag);
    series->write(request, memberFormat);
    return series;
}

}
