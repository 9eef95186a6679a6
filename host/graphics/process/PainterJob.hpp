#pragma once

#include "SharedBytes.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <atomic>
#include <cstdint>
#include <variant>

namespace tavrin::graphics::process
{

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

    /// How many elements of the scene, arrows and vertices, there are and have been painted.
    std::uint64_t total = 0;
    std::atomic<std::uint64_t> done = 0;
    std::atomic<std::uint32_t> outcome = Unfinished;
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

struct PaintJob
{
    Scene scene;
    PictureOptions options;
};

/// How many elements a scene has.
TAVRIN_API std::size_t numElements(const Scene& scene);

/// Appends the state and the description of a picture to be painted. Throws `logic_error` for a
/// drawable of unknown kind, `runtime_error` "aborted" soon after `abortFlag` is set, and
/// `std::bad_alloc`.
TAVRIN_API void writePaintJob(SharedBytes& bytes, const Scene& scene, const PictureOptions& options,
                              const volatile bool& abortFlag);

/// Appends the state and an image to be encoded as PNG. Throws as `writePaintJob`.
TAVRIN_API void writeEncodingJob(SharedBytes& bytes, const Image& image,
                                 const volatile bool& abortFlag);

/// What one of the functions above wrote. Vertex buffers refer to the bytes, which must live on.
TAVRIN_API std::variant<PaintJob, Image> readJob(std::span<const std::byte> bytes);

}
