#pragma once

#include "GlObjects.hpp"
#include "InFlight.hpp"
#include "PictureLayout.hpp"
#include "Program.hpp"
#include "WorkMeter.hpp"

#include <tavrin/graphics/Primitive.hpp>

#include <map>
#include <memory>

namespace tavrin::graphics::painter
{

/// Draws primitives with their own programs. In addition to the uniforms of a primitive, its program
/// gets `u_origin` and `u_scale` (from vertices to placed coordinates), `u_viewProjection` (from
/// placed to clip coordinates) and `u_viewport` (the size of the tile in pixels).
class PrimitivePainter
{
public:
    /// Ignores buffers and uniforms that the program does not use. Throws what `Program` throws, and
    /// `logic_error` for an unknown kind of primitive.
    void paint(const Primitive& primitive, const PictureLayout& layout, const Frame& tile,
               Pass pass, WorkMeter& meter);

private:
    const Program& programFor(const ShaderProgram& files);

    std::map<std::array<std::filesystem::path, 3>, std::unique_ptr<Program>> mPrograms;
    InFlight mInFlight;
};

}
