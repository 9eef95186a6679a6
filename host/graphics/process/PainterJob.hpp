#pragma once

#include "SharedBytes.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <atomic>
#include <cstdint>
#include <optional>

namespace tavrin::graphics::process
{

/// Progress of one kind of work, which both processes see.
struct Work
{
    /// 0 before the work begins.
    std::atomic<std::uint64_t> total = 0;
    std::atomic<std::uint64_t> done = 0;
};

/// How far the painter process is. The first bytes of a job, which both processes see.
struct JobState
{
    enum Outcome : std::uint32_t
    {
        /// Still running, or crashed.
        Unfinished = 0,
        /// The result is complete.
        Done = 1,
        /// The result is a message that says why.
        Failed = 2,
        OutOfMemory = 3
    };

    /// Counts the elements of the scene: arrows and vertices.
    Work painting{};
    /// Counts rows of pixels.
    Work encoding{};
    /// The size of the finished picture in pixels.
    std::atomic<std::uint64_t> width = 0;
    std::atomic<std::uint64_t> height = 0;
    std::atomic<std::uint32_t> outcome = Unfinished;
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

struct Job
{
    Scene scene;
    PictureOptions options;
    /// The result is a file of this format, or otherwise the pixels as in `Image`.
    std::optional<PictureFormat> format;
    /// The number of threads that the process uses which wrote the job.
    int numThreads = 1;
};

/// Appends the state and the description of a picture to be painted. Throws `logic_error` for a
/// drawable of unknown kind, `runtime_error` "aborted" soon after `abortFlag` is set, and
/// `std::bad_alloc`.
TAVRIN_API void writeJob(SharedBytes& bytes, const Scene& scene, const PictureOptions& options,
                         std::optional<PictureFormat> format, const volatile bool& abortFlag);

/// What `writeJob` wrote. Vertex buffers refer to the bytes, which must outlive the job.
TAVRIN_API Job readJob(std::span<const std::byte> bytes);

}
