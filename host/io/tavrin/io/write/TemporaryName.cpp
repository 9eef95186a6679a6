#include <tavrin/io/write/TemporaryName.hpp>

#include <tavrin/io/Formats.hpp>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

constexpr std::string_view prefix = ".tavrin-";
constexpr std::string_view suffix = ".tmp";

/// The process that a temporary file belongs to by its name; nothing for other names.
std::optional<pid_t> processOf(const std::string& name)
{
    if (!name.starts_with(prefix) || !name.ends_with(suffix))
        return std::nullopt;
    pid_t process = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data() + prefix.size(), end, process);
    if (error != std::errc() || *rest != '-' || process <= 0)
        return std::nullopt;
    return process;
}

bool isAlive(pid_t process)
{
    return kill(process, 0) == 0 || errno != ESRCH;
}

/// Whether a process, perhaps of another computer that shares the folder, has claimed the file.
/// True where that cannot be found out.
bool isClaimed(const fs::path& file)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return true;
    const bool isFree = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    close(descriptor);
    return !isFree;
}

}

fs::path folderOf(const fs::path& file)
{
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

fs::path temporaryName(const fs::path& folder)
{
    static std::atomic<unsigned> number = 0;
    return folder / (std::string(prefix) + std::to_string(getpid()) + "-" +
                     std::to_string(number++) + std::string(suffix));
}

void claimTemporary(int descriptor)
{
    // A file system without locks protects the file by the process number in its name alone.
    static_cast<void>(flock(descriptor, LOCK_EX | LOCK_NB));
}

void removeAbandoned(const fs::path& folder)
{
    static std::mutex mutex;
    static std::set<fs::path> known;
    {
        const std::lock_guard lock(mutex);
        if (!known.insert(folder).second)
            return;
    }
    std::error_code ignored;
    std::vector<fs::path> abandoned;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
    {
        const auto process = processOf(entry.path().filename().string());
        if (process && !isAlive(*process) && !isClaimed(entry.path()))
            abandoned.push_back(entry.path());
    }
    for (const fs::path& path : abandoned)
        if (fs::is_directory(fs::symlink_status(path, ignored)))
            removeMembers(path);
        else
            fs::remove(path, ignored);
}

void removeFiles(std::span<const fs::path> files)
{
    constexpr std::size_t maximumHelpers = 15;
    constexpr std::size_t filesPerHelper = 64;
    std::atomic<std::size_t> next = 0;
    const auto work = [&]
    {
        std::error_code ignored;
        for (std::size_t i = next++; i < files.size(); i = next++)
            fs::remove(files[i], ignored);
    };
    std::vector<std::jthread> helpers;
    try
    {
        while (helpers.size() < std::min(maximumHelpers, files.size() / filesPerHelper))
            helpers.emplace_back(work);
    }
    catch (const std::system_error&)
    {
        // The threads that could be started do the rest.
    }
    work();
}

void removeMembers(const fs::path& folder)
{
    std::error_code ignored;
    std::vector<fs::path> members;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
    {
        const FileFormat* const format = findFormat(entry.path());
        if (format != nullptr && format->makeWriter != nullptr)
            members.push_back(entry.path());
    }
    removeFiles(members);
    fs::remove(folder, ignored);
}

}
