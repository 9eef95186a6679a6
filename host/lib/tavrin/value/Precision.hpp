#pragma once

#include <tavrin/base/Export.hpp>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavrin
{

/// How the components of a value array are stored.
enum class Precision
{
    Int8,
    Int16,
    Int32,
    Int64,
    UInt8,
    UInt16,
    UInt32,
    UInt64,
    Float32,
    Float64
};

/// "int8", "int16", ... "float64".
TAVRIN_API std::string_view nameOf(Precision precision);

/// The precision of an arithmetic C++ type, by its size and kind.
template<typename Stored>
    requires std::integral<Stored> || std::floating_point<Stored>
consteval Precision precisionOf()
{
    if constexpr (std::floating_point<Stored>)
    {
        static_assert(sizeof(Stored) == 4 || sizeof(Stored) == 8);
        return sizeof(Stored) == 4 ? Precision::Float32 : Precision::Float64;
    }
    else
    {
        const int first =
            static_cast<int>(std::signed_integral<Stored> ? Precision::Int8 : Precision::UInt8);
        const int doublings = sizeof(Stored) == 1   ? 0
                              : sizeof(Stored) == 2 ? 1
                              : sizeof(Stored) == 4 ? 2
                                                    : 3;
        return static_cast<Precision>(first + doublings);
    }
}

}
