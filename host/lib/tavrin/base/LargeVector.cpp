#include <tavrin/base/LargeVector.hpp>

#include <sys/mman.h>

#include <cstdlib>
#include <mutex>

namespace tavrin
{

namespace
{

constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t largeFrom = 2 * hugePage;

std::size_t roundedToHugePages(std::size_t bytes)
{
    return (bytes + hugePage - 1) / hugePage * hugePage;
}

/// Keeps the large block that was released last for the next allocation of the same size. Repeated
/// runs thus avoid fresh pages, which the system would have to clear in a whole pass over the memory.
/// The system may reclaim the block at any time.
class SpareBlock
{
public:
    /// The spare block if it has that size, null otherwise. A block of another size is released, so
    /// that it never adds to the memory of the new allocation.
    void* take(std::size_t bytes)
    {
        const std::lock_guard lock(mMutex);
        void* const block = std::exchange(mBlock, nullptr);
        if (mBytes == bytes)
            return block;
        std::free(block);
        return nullptr;
    }

    void put(void* block, std::size_t bytes)
    {
        const std::lock_guard lock(mMutex);
        std::free(std::exchange(mBlock, block));
        mBytes = bytes;
        madvise(block, bytes, MADV_FREE);
    }

private:
    std::mutex mMutex;
    void* mBlock = nullptr;
    std::size_t mBytes = 0;
};

SpareBlock& spareBlock()
{
    // Never destroyed, since vectors may be released while the process ends.
    static auto* const spare =
        std::construct_at(static_cast<SpareBlock*>(::operator new(sizeof(SpareBlock))));
    return *spare;
}

}

void* detail::allocateUntouched(std::size_t bytes)
{
    if (bytes < largeFrom)
        return ::operator new(bytes);
    const std::size_t rounded = roundedToHugePages(bytes);
    if (rounded < bytes)
        throw std::bad_alloc();
    if (void* const spare = spareBlock().take(rounded))
        return spare;
    void* const memory = std::aligned_alloc(hugePage, rounded);
    if (memory == nullptr)
        throw std::bad_alloc();
    // A failure is ignored: without huge pages the memory is only slower to fault in.
    madvise(memory, rounded, MADV_HUGEPAGE);
    return memory;
}

void detail::releaseUntouched(void* memory, std::size_t bytes) noexcept
{
    if (bytes < largeFrom)
        ::operator delete(memory);
    else
        spareBlock().put(memory, roundedToHugePages(bytes));
}

}
