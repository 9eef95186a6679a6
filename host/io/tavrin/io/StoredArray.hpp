#pragma once

#include <tavrin/base/TypeList.hpp>
#include <tavrin/domain/CellTable.hpp>
#include <tavrin/value/Precision.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tavrin::io
{

/// The C++ types of the precisions.
using StoredTypes = TypeList<std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::uint8_t,
                             std::uint16_t, std::uint32_t, std::uint64_t, float, double>;

/// Calls `visitor.operator()<Stored>()` with the type of a precision.
template<typename Visitor>
void visitPrecision(Precision precision, Visitor&& visitor)
{
    visitTypes<StoredTypes>(
        [&]<typename Stored>()
        {
            if (precisionOf<Stored>() != precision)
                return false;
            visitor.template operator()<Stored>();
            return true;
        });
}

/// The number of elements above which several threads make a loop faster.
inline constexpr std::size_t worthThreads = 65536;

/// The bytes of one number.
std::size_t sizeOf(Precision precision);

/// Tuples of numbers in the precision of a file, in memory that `owner` keeps alive.
struct StoredArray
{
    Precision precision = Precision::Float64;
    std::size_t tuples = 0;
    std::size_t components = 1;
    std::byte* data = nullptr;
    std::shared_ptr<const void> owner;

    /// Allocates memory for tuples without initializing it.
    static StoredArray allocate(Precision precision, std::size_t tuples, std::size_t components);

    std::size_t numbers() const { return tuples * components; }
    std::size_t bytesPerTuple() const { return components * sizeOf(precision); }

    template<typename Stored>
    Stored* as() const
    {
        return reinterpret_cast<Stored*>(data);
    }
};

/// The tuples with the given indices, in their order.
StoredArray gather(const StoredArray& array, const std::vector<std::size_t>& indices);

/// The numbers as indices: integers of 32 or 64 bits share the memory, others are converted. Throws
/// `Malformed` for floating-point numbers.
IndexArray toIndices(const StoredArray& array);

}
