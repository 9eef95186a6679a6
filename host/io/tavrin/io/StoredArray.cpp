#include <tavrin/io/StoredArray.hpp>

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/io/Malformed.hpp>

#include <algorithm>
#include <cstring>

namespace tavrin::io
{

std::size_t sizeOf(Precision precision)
{
    std::size_t size = 0;
    visitPrecision(precision, [&]<typename Stored>() { size = sizeof(Stored); });
    return size;
}

StoredArray StoredArray::allocate(Precision precision, std::size_t tuples, std::size_t components)
{
    const std::size_t bytesPerTuple = components * sizeOf(precision);
    if (bytesPerTuple > 0 && tuples > static_cast<std::size_t>(-1) / bytesPerTuple)
        throw std::bad_alloc();
    auto memory = std::make_shared<LargeVector<std::byte>>(tuples * bytesPerTuple);
    std::byte* const data = memory->data();
    return {precision, tuples, components, data, std::move(memory)};
}

StoredArray gather(const StoredArray& array, const std::vector<std::size_t>& indices)
{
    auto result = StoredArray::allocate(array.precision, indices.size(), array.components);
    const std::size_t bytes = array.bytesPerTuple();
#pragma omp parallel for schedule(static) if (indices.size() > worthThreads)
    for (std::size_t i = 0; i < indices.size(); ++i)
        std::memcpy(result.data + i * bytes, array.data + indices[i] * bytes, bytes);
    return result;
}

IndexArray toIndices(const StoredArray& array)
{
    if (array.precision == Precision::Int32)
        return {std::span<const std::int32_t>(array.as<std::int32_t>(), array.numbers()),
                array.owner};
    if (array.precision == Precision::Int64)
        return {std::span<const std::int64_t>(array.as<std::int64_t>(), array.numbers()),
                array.owner};
    std::vector<std::int64_t> widened(array.numbers());
    visitPrecision(array.precision,
                   [&]<typename Stored>()
                   {
                       if constexpr (std::is_floating_point_v<Stored>)
                           throw Malformed("cell offsets or connectivity are not integers");
                       else
                           std::copy_n(array.as<Stored>(), widened.size(), widened.begin());
                   });
    return IndexArray(std::move(widened));
}

}
