#pragma once

#include "SharedBytes.hpp"

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics::process
{

/// Runs the program tavrin-painter on a job and returns its result: the content of a file, or pixels.
///
/// Painting happens in a process of its own because a graphics driver cannot be interrupted, may
/// crash where memory is short, and needs libraries that nothing else does. The process is killed
/// as soon as `abortFlag` is set. `observer`, which may be null, follows the work under the titles
/// "painting" and "encoding".
///
/// Throws `runtime_error` "aborted" after an abort, with the painter's message where it failed, and
/// "the picture cannot be painted: CAUSE" where it cannot be started or crashed; `std::bad_alloc`
/// where memory is short.
PictureFile runPainter(SharedBytes& job, const volatile bool& abortFlag,
                       ProgressObserver* observer);

}
