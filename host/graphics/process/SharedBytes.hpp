#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>
#include <span>

namespace tavrin::graphics::process
{

/// A nameless file in memory through which two processes exchange bytes.
class TAVRIN_API SharedBytes
{
public:
    /// An empty one. Throws `runtime_error` where the system provides none.
    SharedBytes();
    /// Takes over a descriptor that this process inherited.
    explicit SharedBytes(int descriptor);
    SharedBytes(const SharedBytes&) = delete;
    SharedBytes& operator=(const SharedBytes&) = delete;
    ~SharedBytes();

    /// Closed in other programs that this process starts, unless it is duplicated for them.
    int descriptor() const { return mDescriptor; }

    /// Adds bytes at the end. Throws `std::bad_alloc` where memory is short.
    void append(std::span<const std::byte> bytes);

    /// All bytes, in memory that both processes see. The span lives as long as this object, and does
    /// not grow with later additions. Throws `std::bad_alloc` where memory is short.
    std::span<std::byte> map();

private:
    int mDescriptor;
    std::span<std::byte> mMapping;
};

}
