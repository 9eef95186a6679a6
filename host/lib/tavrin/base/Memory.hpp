#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>

namespace tavrin
{

/// The number of bytes that this process can still allocate: the available memory of the machine,
/// limited by the address space of the process (`ulimit -v`) and by the control groups of its
/// container or batch job. Memory that is reserved but not yet touched counts as available.
TAVRIN_API std::size_t availableMemory();

}
