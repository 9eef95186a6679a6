#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>

namespace tavrin
{

/// How many bytes this process can still take: what the machine has left, and no more than is left
/// by limits on the process's address space (`ulimit -v`) and on the control groups of its container
/// or batch job. Counts nothing for memory that is reserved but untouched so far.
TAVRIN_API std::size_t availableMemory();

}
