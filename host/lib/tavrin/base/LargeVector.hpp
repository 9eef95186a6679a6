#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace tavrin
{

namespace detail
{

/// Allocates memory without touching it, so that the threads which fill it also fault its pages in.
/// The system is asked to back large blocks with huge pages. Throws `std::bad_alloc`.
TAVRIN_API void* allocateUntouched(std::size_t bytes);
TAVRIN_API void releaseUntouched(void* memory, std::size_t bytes) noexcept;

}

/// An allocator that leaves new elements of trivial types uninitialized.
template<typename T>
struct LargeAllocator
{
    using value_type = T;

    LargeAllocator() = default;
    template<typename Other>
    LargeAllocator(const LargeAllocator<Other>&)
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / sizeof(T))
            throw std::bad_array_new_length();
        return static_cast<T*>(detail::allocateUntouched(count * sizeof(T)));
    }

    void deallocate(T* memory, std::size_t count) noexcept
    {
        detail::releaseUntouched(memory, count * sizeof(T));
    }

    template<typename Element, typename... Arguments>
    void construct(Element* place, Arguments&&... arguments)
    {
        if constexpr (sizeof...(Arguments) == 0)
            ::new (static_cast<void*>(place)) Element;
        else
            ::new (static_cast<void*>(place)) Element(std::forward<Arguments>(arguments)...);
    }

    template<typename Other>
    bool operator==(const LargeAllocator<Other>&) const
    {
        return true;
    }
};

/// A vector for results of many values: `LargeVector<T>(n)` does not write to its memory, and its
/// elements are undefined until they are assigned.
template<typename T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

}
