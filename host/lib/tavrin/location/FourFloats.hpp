#pragma once

#include <bit>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tavrin
{

namespace detail
{

/// Four neighboring numbers, and four integers. Comparisons give integers that are -1 or 0.
using FourFloats = float __attribute__((vector_size(16)));
using FourIntegers = std::int32_t __attribute__((vector_size(16)));

inline FourFloats loadFour(const float* numbers)
{
    FourFloats quad;
    __builtin_memcpy(&quad, numbers, sizeof(quad));
    return quad;
}

inline std::uint32_t bitsOf(FourIntegers mask)
{
#ifdef __SSE2__
    return static_cast<std::uint32_t>(_mm_movemask_ps(std::bit_cast<__m128>(mask)));
#else
    return (mask[0] & 1U) | (mask[1] & 2U) | (mask[2] & 4U) | (mask[3] & 8U);
#endif
}

}

}
