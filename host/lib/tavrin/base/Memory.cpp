#include <tavrin/base/Memory.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace tavrin
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

/// The memory that the machine can provide without swapping.
std::size_t leftOnMachine()
{
    std::ifstream file("/proc/meminfo");
    std::size_t sum = 0;
    std::string key;
    std::size_t kibibytes = 0;
    for (std::string line; file >> key >> kibibytes && std::getline(file, line);)
        if (key == "MemAvailable:" || key == "SwapFree:")
            sum += kibibytes * 1024;
    return sum > 0 ? sum : unlimited;
}

std::size_t leftOfAddressSpace()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return unlimited;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const std::size_t used = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return limit.rlim_cur > used ? limit.rlim_cur - used : 0;
}

/// The number of bytes in a file, or on the line of a file that begins with `key`.
std::size_t bytesIn(const fs::path& path, std::size_t otherwise, const std::string& key = {})
{
    std::ifstream file(path);
    std::string word;
    std::size_t bytes = otherwise;
    while (!key.empty() && file >> word && word != key)
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    return file >> bytes ? bytes : otherwise;
}

/// The memory that the control groups of this process, those of a container or a batch job, still
/// allow. Cached pages of files count as free, because the system drops them on demand.
std::size_t leftInControlGroups()
{
    std::size_t left = unlimited;
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);)
    {
        const bool isUnified = line.starts_with("0::");
        const std::string marker = isUnified ? "::" : ":memory:";
        const auto start = line.find(marker);
        if (start == std::string::npos)
            continue;
        const fs::path root = isUnified ? "/sys/fs/cgroup" : "/sys/fs/cgroup/memory";
        // A container may see its own group as the root, although the path is that of the outside.
        for (fs::path group = line.substr(start + marker.size());; group = group.parent_path())
        {
            const fs::path folder = root / group.relative_path();
            const std::size_t limit =
                bytesIn(folder / (isUnified ? "memory.max" : "memory.limit_in_bytes"), unlimited);
            const std::size_t used =
                bytesIn(folder / (isUnified ? "memory.current" : "memory.usage_in_bytes"), 0);
            const std::size_t cached =
                bytesIn(folder / "memory.stat", 0, isUnified ? "file" : "total_cache");
            const std::size_t held = used - std::min(cached, used);
            if (limit != unlimited)
                left = std::min(left, limit - std::min(held, limit));
            if (!group.has_relative_path())
                break;
        }
    }
    return left;
}

}

std::size_t availableMemory()
{
    return std::min({leftOnMachine(), leftOfAddressSpace(), leftInControlGroups()});
}

}
