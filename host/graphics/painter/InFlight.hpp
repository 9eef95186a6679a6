#pragma once

#include <epoxy/gl.h>

#include <deque>

namespace tavrin::graphics::painter
{

/// Limits the work that the graphics system has accepted but not finished. A software rasterizer
/// keeps all triangles in memory until it has drawn them.
class InFlight
{
public:
    InFlight() = default;
    InFlight(const InFlight&) = delete;
    InFlight& operator=(const InFlight&) = delete;
    ~InFlight();

    /// Marks the end of a portion of work, and waits until at most two portions are unfinished.
    void endPortion();

private:
    std::deque<GLsync> mPortions;
};

}
