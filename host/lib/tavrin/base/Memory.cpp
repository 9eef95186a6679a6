#include <tavrin/base/Memory.hpp>

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace tavrin
{

namespace
{

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

/// What the machine can give without pushing others out.
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

}

std::size_t availableMemory()
{
    return std::min(leftOnMachine(), leftOfAddressSpace());
}

}
