#pragma once

#include <epoxy/gl.h>

#include <deque>

namespace tavrin::graphics::painter
{

/// Keeps the graphics system from running far behind: drawing in software, it holds all triangles
/// in memory that it has not painted yet.
class InFlight
{
public:
    InFlight() = default;
    InFlight(const InFlight&) = delete;
    InFlight& operator=(const InFlight&) = delete;
    ~InFlight();

    /// Marks the end of a portion of work, and waits until no more than two are unfinished.
    void endPortion();

private:
    std::deque<GLsync> mPortions;
};

}
