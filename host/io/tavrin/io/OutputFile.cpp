#include <tavrin/io/OutputFile.hpp>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

fs::path withoutLink(const fs::path& file)
{
    std::error_code ignored;
    if (!fs::is_symlink(file, ignored))
        return file;
    const fs::path target = fs::weakly_canonical(file, ignored);
    return target.empty() ? file : target;
}

/// Why the file cannot be written whatever its content; empty where nothing speaks against it.
std::string findObstacle(const fs::path& file)
{
    std::error_code error;
    const fs::path folder = folderOf(file);
    if (!fs::exists(folder, error))
        return error ? error.message() : "the folder " + folder.string() + " does not exist";
    if (!fs::is_directory(folder, error))
        return folder.string() + " is not a folder";
    const fs::file_status existing = fs::status(file, error);
    if (fs::is_directory(existing))
        return "is a folder";
    if (fs::exists(existing) && !fs::is_regular_file(existing))
        return "exists and is not a regular file";
    // Renaming would also replace a file that its owner has protected against writing.
    if (fs::exists(existing) && access(file.c_str(), W_OK) != 0)
        return std::generic_category().message(errno);
    return {};
}

/// Opens a new file that nobody may read or write who may not do so with the one at hand. Returns
/// -1 where that fails, with the cause in `errno`.
int create(const fs::path& file, const fs::path& existing)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    std::error_code ignored;
    const fs::file_status status = fs::status(existing, ignored);
    if (!fs::exists(status))
        return open(file.c_str(), flags, 0666);
    const auto mode = static_cast<mode_t>(status.permissions() & fs::perms::all);
    const int descriptor = open(file.c_str(), flags, mode);
    // Gives back what the umask has taken, where the file system knows permissions.
    if (descriptor >= 0)
        fchmod(descriptor, mode);
    return descriptor;
}

}

fs::path folderOf(const fs::path& file)
{
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

fs::path temporaryName(const fs::path& folder)
{
    static std::atomic<unsigned> number = 0;
    return folder /
           (".tavrin-" + std::to_string(getpid()) + "-" + std::to_string(number++) + ".tmp");
}

OutputFile::OutputFile(const fs::path& file, const volatile bool& abortFlag,
                       const fs::path& nameInErrors)
    : mNameInErrors(nameInErrors.empty() ? file : nameInErrors), mFile(withoutLink(file)),
      mAbortFlag(abortFlag),
      mDescriptor(
          [this]()
          {
              if (const std::string obstacle = findObstacle(mFile); !obstacle.empty())
                  throw FileError(mNameInErrors, obstacle);
              int descriptor = -1;
              do
              {
                  mTemporary = temporaryName(folderOf(mFile));
                  descriptor = create(mTemporary, mFile);
              } while (descriptor < 0 && errno == EEXIST);
              if (descriptor < 0)
                  fail(errno);
              return descriptor;
          }()),
      mBuffer(mDescriptor, abortFlag), mStream(&mBuffer)
{
}

OutputFile::~OutputFile()
{
    if (mDescriptor >= 0)
        close(mDescriptor);
    std::error_code ignored;
    if (!mTemporary.empty())
        fs::remove(mTemporary, ignored);
}

void OutputFile::complete()
{
    if (mDescriptor < 0)
        return;
    mStream.flush();
    if (mAbortFlag)
        throw Aborted();
    if (mBuffer.error() != 0)
        fail(mBuffer.error());
    if (!mStream)
        fail(EIO);
    // Some file systems find out only now that a disk or a quota is full. Files in memory and the
    // like have nothing to synchronise and say so.
    if (fsync(mDescriptor) != 0 && errno != EINVAL && errno != EROFS)
        fail(errno);
    if (close(std::exchange(mDescriptor, -1)) != 0)
        fail(errno);
}

void OutputFile::publish()
{
    complete();
    if (rename(mTemporary.c_str(), mFile.c_str()) != 0)
        fail(errno);
    mTemporary.clear();
}

void OutputFile::fail(int error) const
{
    throw FileError(mNameInErrors, std::generic_category().message(error));
}

}
