#include <tavrin/io/OutputFile.hpp>

#include <tavrin/io/write/FileBuffer.hpp>
#include <tavrin/io/write/TemporaryName.hpp>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

int standardOutput = STDOUT_FILENO;

/// The number of the open stream that a path such as "/proc/self/fd/1" stands for.
std::optional<int> streamOf(const fs::path& file)
{
    std::error_code error;
    const fs::path streams = fs::canonical("/proc/self/fd", error);
    const std::string name = file.filename().string();
    int number = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error || fault != std::errc() || end != name.data() + name.size())
        return std::nullopt;
    return fs::canonical(folderOf(file), error) == streams ? std::optional(number) : std::nullopt;
}

/// Whether something exists that is written to and never replaced.
bool isSink(const fs::path& file)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    return streamOf(file) ||
           (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status));
}

bool isPipe(const fs::path& file)
{
    std::error_code ignored;
    return fs::is_fifo(file, ignored);
}

/// Opens a device, a pipe or an open stream. Waits for the reader of a pipe, until an abort.
int openSink(const fs::path& file, const volatile bool& abortFlag)
{
    // Opening the name again would start at the beginning of a file that the stream is open for.
    if (const auto stream = streamOf(file))
        return fcntl(*stream, F_DUPFD_CLOEXEC, 0);
    constexpr auto interval = std::chrono::milliseconds(20);
    int descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    for (; descriptor < 0 && errno == ENXIO && isPipe(file);
         descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK))
    {
        if (abortFlag)
            throw Aborted();
        std::this_thread::sleep_for(interval);
    }
    if (descriptor >= 0)
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return descriptor;
}

/// Opens a file without a name, for content that is copied elsewhere later.
int openNameless()
{
    std::error_code ignored;
    const fs::path folder = fs::temp_directory_path(ignored);
    const int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    return descriptor >= 0 ? descriptor : memfd_create("tavrin", MFD_CLOEXEC);
}

/// Why the file cannot be written whatever its content is; empty where there is no such cause.
std::string findObstacle(const fs::path& file)
{
    std::error_code error;
    if (isSink(file))
        return {};
    const fs::path folder = folderOf(file);
    if (!fs::exists(folder, error))
        return error ? error.message() : "the folder " + folder.string() + " does not exist";
    if (!fs::is_directory(folder, error))
        return folder.string() + " is not a folder";
    const fs::file_status existing = fs::status(file, error);
    if (fs::is_directory(existing))
        return "is a folder";
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        return "the folder " + folder.string() + " is not writable";
    // Renaming would also replace a file that its owner has protected against writing.
    if (fs::exists(existing) && access(file.c_str(), W_OK) != 0)
        return std::generic_category().message(errno);
    return {};
}

/// Creates a file that is at most as accessible to others as the existing one, if there is one.
/// Returns -1 where that fails, with the cause in `errno`.
int create(const fs::path& file, const fs::path& existing)
{
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    std::error_code ignored;
    const fs::file_status status = fs::status(existing, ignored);
    if (!fs::exists(status))
        return open(file.c_str(), flags, 0666);
    const auto mode = static_cast<mode_t>(status.permissions() & fs::perms::all);
    const int descriptor = open(file.c_str(), flags, mode);
    // Restores permissions that the umask has removed, where the file system has permissions.
    if (descriptor >= 0)
        fchmod(descriptor, mode);
    return descriptor;
}

}

void setStandardOutput(int descriptor)
{
    standardOutput = descriptor;
}

bool isStandardOutput(const fs::path& file)
{
    return file == "-" || file == "-.csv";
}

fs::path followLinks(fs::path file)
{
    if (isStandardOutput(file))
        return "/proc/self/fd/" + std::to_string(standardOutput);
    // As many links as the system follows.
    constexpr int maximumLinks = 40;
    for (int link = 0; link < maximumLinks && !streamOf(file); ++link)
    {
        std::error_code error;
        const fs::path target = fs::read_symlink(file, error);
        if (error)
            break;
        file = target.is_absolute() ? target : file.parent_path() / target;
    }
    return file;
}

void requireWritable(const fs::path& file)
{
    if (const std::string obstacle = findObstacle(followLinks(file)); !obstacle.empty())
        throw FileError(file, obstacle);
}

OutputFile::OutputFile(const fs::path& file, const volatile bool& abortFlag,
                       const fs::path& nameInErrors)
    : mNameInErrors(nameInErrors.empty() ? file : nameInErrors), mFile(followLinks(file)),
      mAbortFlag(abortFlag), mContent(openContent()),
      mBuffer(std::make_unique<FileBuffer>(mContent, abortFlag)), mStream(mBuffer.get())
{
}

OutputFile::~OutputFile()
{
    std::error_code ignored;
    if (!mTemporary.empty())
        fs::remove(mTemporary, ignored);
    close(mContent);
    if (mSink >= 0)
        close(mSink);
}

int OutputFile::openContent()
{
    if (const std::string obstacle = findObstacle(mFile); !obstacle.empty())
        throw FileError(mNameInErrors, obstacle);
    if (isSink(mFile))
    {
        mSink = openSink(mFile, mAbortFlag);
        const int content = mSink < 0 ? -1 : openNameless();
        if (content < 0)
            fail(errno);
        return content;
    }
    const fs::path folder = folderOf(mFile);
    removeAbandoned(folder);
    int content = -1;
    do
    {
        mTemporary = temporaryName(folder);
        content = create(mTemporary, mFile);
    } while (content < 0 && errno == EEXIST);
    if (content < 0)
        fail(errno);
    claimTemporary(content);
    return content;
}

void OutputFile::complete()
{
    if (std::exchange(mIsComplete, true))
        return;
    requireNoError();
    // Some file systems find out only now that a disk or a quota is full. A file system in memory
    // has nothing to synchronize, and some of them report that as an error.
    if (mSink < 0 && fsync(mContent) != 0 && errno != EINVAL && errno != EROFS)
        fail(errno);
}

/// Passes on what is buffered, and throws where that or an earlier attempt failed.
void OutputFile::requireNoError()
{
    mStream.flush();
    if (mAbortFlag)
        throw Aborted();
    if (mBuffer->error() != 0)
        fail(mBuffer->error());
    if (!mStream)
        fail(EIO);
}

void OutputFile::publish()
{
    complete();
    if (mSink >= 0)
        return copyToSink();
    if (rename(mTemporary.c_str(), mFile.c_str()) != 0)
        fail(errno);
    mTemporary.clear();
}

void OutputFile::readBack(const std::function<void(std::string_view)>& work)
{
    requireNoError();
    std::vector<char> block(std::size_t{1} << 18);
    for (off_t position = 0;;)
    {
        const ssize_t count = pread(mContent, block.data(), block.size(), position);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail(errno);
        if (count == 0)
            break;
        work({block.data(), static_cast<std::size_t>(count)});
        position += count;
        if (mAbortFlag)
            throw Aborted();
    }
}

void OutputFile::copyToSink()
{
    FileBuffer sink(mSink, mAbortFlag);
    readBack(
        [&](std::string_view text)
        {
            sink.sputn(text.data(), static_cast<std::streamsize>(text.size()));
            if (sink.error() != 0)
                fail(sink.error());
        });
    sink.pubsync();
    if (sink.error() != 0)
        fail(sink.error());
}

void OutputFile::fail(int error) const
{
    throw FileError(mNameInErrors, std::generic_category().message(error));
}

}
