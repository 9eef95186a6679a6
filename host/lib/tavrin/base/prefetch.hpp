#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrin
{

/// Tells the processor that the memory will be read soon. Any address is allowed.
inline void prefetch(const void* memory, std::size_t bytes)
{
    constexpr std::uintptr_t cacheLine = 64;
    const auto* const begin = static_cast<const char*>(memory);
    const std::size_t ahead = reinterpret_cast<std::uintptr_t>(begin) % cacheLine;
    for (std::size_t i = 0; i < ahead + bytes; i += cacheLine)
        __builtin_prefetch(begin - ahead + i);
}

}
