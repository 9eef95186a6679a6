#pragma once

#include "Camera.hpp"
#include "GlObjects.hpp"
#include "InFlight.hpp"
#include "Program.hpp"
#include "WorkMeter.hpp"

#include <tavrin/graphics/Primitive.hpp>

#include <map>
#include <memory>

namespace tavrin::graphics::painter
{

/// Draws primitives with their own programs. Beside their own uniforms, programs get `u_origin` and
/// `u_scale` (what places a vertex), `u_viewProjection` (from there to the clip coordinates) and
/// `u_viewport` (pixels).
class PrimitivePainter
{
public:
    /// Buffers and uniforms that the program does not read are ignored. Throws `runtime_error` as
    /// `Program`.
    void paint(const Primitive& primitive, const Placement& placement, const Camera& camera,
               const Frame& tile, Pass pass, WorkMeter& meter);

private:
    const Program& programFor(const ShaderProgram& files);

    std::map<std::array<std::filesystem::path, 3>, std::unique_ptr<Program>> mPrograms;
    InFlight mInFlight;
};

}
