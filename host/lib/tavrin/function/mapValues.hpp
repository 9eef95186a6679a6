#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/base/Processors.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <atomic>

namespace tavrin
{

namespace detail
{

/// The number of values in 8 KB: blocks of three arrays fit into the nearest cache together.
template<typename T>
inline constexpr std::size_t valuesPerBlock =
    std::max<std::size_t>(1, std::size_t{8192} / sizeof(T));

/// A block of values of an array, converted to T if they are stored differently.
template<typename T>
class ValueBlock
{
public:
    ValueBlock(const ValueArray<T>& array, std::size_t first, std::size_t count)
        : mValues(array.read(first, std::span(mScratch).first(count)))
    {
    }
    ValueBlock(const ValueBlock&) = delete;
    ValueBlock& operator=(const ValueBlock&) = delete;

    const T* data() const { return mValues.data(); }

private:
    std::array<T, valuesPerBlock<T>> mScratch;
    std::span<const T> mValues;
};

/// Calls `work(first, count)` for blocks that cover 0 ... size - 1, in contiguous runs on all
/// threads. Advances `progress` by the size of each block and skips the rest once `abortFlag` is
/// set. `work` must not throw.
template<typename Work>
void forBlocks(std::size_t size, std::size_t blockSize, volatile unsigned long& progress,
               const volatile bool& abortFlag, const Work& work)
{
    const std::size_t blocks = (size + blockSize - 1) / blockSize;
    const std::atomic_ref counter(const_cast<unsigned long&>(progress));
#pragma omp parallel for schedule(static) if (blocks > 1)
    for (std::size_t block = 0; block < blocks; ++block)
    {
        if (abortFlag)
            continue;
        const std::size_t first = block * blockSize;
        const std::size_t count = std::min(blockSize, size - first);
        work(first, count);
        counter.fetch_add(count, std::memory_order_relaxed);
    }
}

template<typename Result, typename Formula, typename... Operands>
TAVRIN_FOR_SEVERAL_PROCESSORS void mapBlock(const Formula& formula, std::size_t count,
                                            Result* target, const Operands*... operands)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = formula(operands[i]...);
}

template<typename Result, typename Formula, typename... Operands>
LargeVector<Result> mapArrays(const Formula& formula, volatile unsigned long& progress,
                              const volatile bool& abortFlag,
                              const ValueArray<Operands>&... operands)
{
    constexpr std::size_t blockSize = std::min({valuesPerBlock<Operands>...});
    const std::size_t size = std::min({operands.size()...});
    const std::size_t segment = std::min({operands.segmentSize()...});
    LargeVector<Result> result(size);
    for (std::size_t start = 0; start < size && !abortFlag; start += segment)
    {
        const std::size_t count = std::min(segment, size - start);
        // Steps of a series are loaded here: no exception may leave the parallel loop.
        [&](const auto&... parts)
        {
            forBlocks(count, blockSize, progress, abortFlag,
                      [&](std::size_t first, std::size_t blockCount)
                      {
                          Result* const target = result.data() + start + first;
                          [&](const auto&... blocks) {
                              mapBlock(formula, blockCount, target, blocks.data()...);
                          }(ValueBlock<Operands>(*parts, first, blockCount)...);
                      });
        }(operands.part(start, count)...);
    }
    return result;
}

}

/// One result per value: result[i] = formula(values[i]).
///
/// Runs on all threads, over blocks of values; a series is read step by step. `progress` counts
/// values. Soon after `abortFlag` is set the function returns, and the rest of the result is
/// undefined. The array must be held by a shared pointer. Throws `std::bad_alloc`,
/// and whatever loading a step throws; `formula` must not throw.
template<typename Result, typename T, typename Formula>
LargeVector<Result> mapValues(const ValueArray<T>& values, const Formula& formula,
                              volatile unsigned long& progress, const volatile bool& abortFlag)
{
    return detail::mapArrays<Result>(formula, progress, abortFlag, values);
}

/// The same for two arrays of one size: result[i] = formula(a[i], b[i]).
template<typename Result, typename A, typename B, typename Formula>
LargeVector<Result> mapValues(const ValueArray<A>& a, const ValueArray<B>& b,
                              const Formula& formula, volatile unsigned long& progress,
                              const volatile bool& abortFlag)
{
    return detail::mapArrays<Result>(formula, progress, abortFlag, a, b);
}

}
