#include "SharedBytes.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

namespace tavrin::graphics::process
{

namespace
{

int makeDescriptor()
{
    const int descriptor = memfd_create("tavrin", MFD_CLOEXEC);
    // Above the standard streams, onto which it is duplicated for the other process.
    const int moved = descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int cause = errno;
    if (descriptor >= 0)
        close(descriptor);
    if (moved < 0)
        throw runtime_error(std::string("memory cannot be shared with another process: ") +
                            std::strerror(cause));
    return moved;
}

}

SharedBytes::SharedBytes() : mDescriptor(makeDescriptor()) {}

SharedBytes::SharedBytes(int descriptor) : mDescriptor(descriptor) {}

SharedBytes::~SharedBytes()
{
    if (!mMapping.empty())
        munmap(mMapping.data(), mMapping.size());
    close(mDescriptor);
}

void SharedBytes::append(std::span<const std::byte> bytes)
{
    while (!bytes.empty())
    {
        const ssize_t written = write(mDescriptor, bytes.data(), bytes.size());
        if (written > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            throw std::bad_alloc();
    }
}

std::span<std::byte> SharedBytes::map()
{
    if (!mMapping.empty())
        return mMapping;
    struct stat status
    {};
    if (fstat(mDescriptor, &status) != 0 || status.st_size == 0)
        return {};
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, mDescriptor, 0);
    if (address == MAP_FAILED)
        throw std::bad_alloc();
    mMapping = {static_cast<std::byte*>(address), size};
    return mMapping;
}

}
