#pragma once

#include "PictureLayout.hpp"
#include "Program.hpp"

namespace tavrin::graphics::painter
{

inline std::array<float, 3> narrowed(const Position& position)
{
    return {static_cast<float>(position[0]), static_cast<float>(position[1]),
            static_cast<float>(position[2])};
}

/// Makes a program current and sets the uniforms that all programs of a scene share.
inline void useFor(const Program& program, const PictureLayout& layout, const Frame& tile,
                   Pass pass)
{
    const Camera& camera = layout.camera();
    program.use();
    program.setPass(pass);
    program.set("u_viewProjection", camera.viewProjection(tile));
    program.set("u_depth",
                narrowed({camera.nearest(), camera.farthest(), camera.isParallel() ? 1.0 : 0.0}));
    program.set("u_unit", static_cast<float>(layout.style().unit));
}

}
