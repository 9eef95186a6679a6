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

/// A series whose steps are in a temporary folder, which lacks only its name once it is complete.
class PendingSeries final : public PendingFile
{
public:
    PendingSeries(const fs::path& file, const volatile bool& abortFlag)
        : mFile(file), mNames(file), mAbortFlag(abortFlag), mCollection(file, abortFlag)
    {
        std::error_code ignored;
        if (isTaken(mNames.folder()) && !fs::is_directory(mNames.folder(), ignored))
            throw FileError(file, mNames.folder().string() +
                                      ", where the files of its steps belong, is not a folder");
        mTemporary = std::make_unique<TemporaryFolder>(mFile, mNames.folder());
    }

    /// Writes the file of the next step. `writeContent` gets its stream.
    void addStep(double time, std::string_view extension, const auto& writeContent)
    {
        const std::string member = mNames.member(mSteps.size(), extension);
        if (isTaken(mNames.folder() / member) && !mNames.mayReplace(member))
            throw FileError(mFile, (mNames.folder() / member).string() +
                                       " exists and belongs to another data set; remove it or "
                                       "choose another name");
        writeMember(mTemporary->path() / member, writeContent);
        mSteps.emplace_back(time, member);
        mMembers.insert(member);
    }

    /// Writes the list of the steps, and waits until everything has reached the disk.
    void complete()
    {
        // A file system in memory has nothing to synchronize, and may say so by an error.
        if (const int error = mTemporary->synchronize();
            error != 0 && error != EINVAL && error != EROFS)
            fail(error);
        writeCollection();
        mCollection.complete();
    }

    void publish() override
    {
        const Names replaceable = mNames.findReplaceable(mMembers);
        try
        {
            moveToFolder(mTemporary->path(), mNames.folder(), mMembers, replaceable);
        }
        catch (const fs::filesystem_error& error)
        {
            fail(error.code().value());
        }
        mCollection.publish();
        std::vector<fs::path> obsolete;
        for (const std::string& member : replaceable)
            if (!mMembers.contains(member))
                obsolete.push_back(mNames.folder() / member);
        removeFiles(obsolete);
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

    void writeCollection()
    {
        pugi::xml_document document;
        auto root = document.append_child("VTKFile");
        root.append_attribute("type") = "Collection";
        root.append_attribute("version") = "0.1";
        auto collection = root.append_child("Collection");
        for (const auto& [time, name] : mSteps)
        {
            auto member = collection.append_child("DataSet");
            member.append_attribute("timestep") = toText(time).c_str();
            member.append_attribute("part") = 0;
            member.append_attribute("file") = mNames.reference(name).c_str();
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
    std::unique_ptr<TemporaryFolder> mTemporary;
    /// The time of each step and the name of its file.
    std::vector<std::pair<double, std::string>> mSteps;
    Names mMembers;
};

class SeriesWriter final : public FunctionWriter
{
public:
    SeriesWriter(const fs::path& file, const volatile bool& abortFlag)
        : mAbortFlag(abortFlag), mSeries(std::make_unique<PendingSeries>(file, abortFlag))
    {
    }

    void append(const FunctionBase& function, const std::string& arrayName) override
    {
        useDomain(function.domain());
        const std::vector<NamedFunction> functions{{function, arrayName}};
        const std::vector<double> times = writtenTimes(function);
        for (std::size_t step = 0; step < times.size(); ++step)
            mSeries->addStep(times[step], mFormat->extension,
                             [&](std::ostream& stream)
                             { mWriter->write(functions, step, stream); });
    }

    std::unique_ptr<PendingFile> finish() override
    {
        // Nothing refers to the functions any more.
        mWriter.reset();
        mDomain.reset();
        mSeries->complete();
        return std::move(mSeries);
    }

private:
    /// Keeps what was prepared for the grid of the step before if this step has the same one.
    void useDomain(const std::shared_ptr<const Domain>& domain)
    {
        if (domain == mDomain)
            return;
        mWriter.reset();
        mDomain = domain;
        mFormat = &bestGridFormat(*mDomain);
        mWriter = mFormat->makeWriter(*mDomain, mAbortFlag);
    }

    const volatile bool& mAbortFlag;
    std::unique_ptr<PendingSeries> mSeries;
    std::shared_ptr<const Domain> mDomain;
    const FileFormat* mFormat = nullptr;
    std::unique_ptr<StepWriter> mWriter;
};

}

std::unique_ptr<FunctionWriter> startPvd(const fs::path& file, const volatile bool& abortFlag)
{
    return std::make_unique<SeriesWriter>(file, abortFlag);
}

}
