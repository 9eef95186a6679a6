#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>

namespace tavrin
{

/// How many bytes this process can still take: what the machine has left, and no more than a limit
/// on the process's address space (`ulimit -v`) leaves. Counts nothing for memory that is reserved
/// but untouched so far.
TAVRIN_API std::size_t availableMemory();

}
