#pragma once

#include <tavrin/value/Tensor.hpp>

#include <cstdint>
#include <vector>

namespace tavrin::graphics::painter
{

/// Triangles of one arrow of length 1 and width 1. The first two coordinates are in widths (across
/// and towards the eye), the third runs from 0 at the tail to 1 at the tip.
struct ArrowMesh
{
    struct Vertex
    {
        Tensor<float, 3> position;
        /// Perpendicular to the surface; of any length.
        Tensor<float, 3> normal;
    };

    /// In widths.
    static constexpr float shaftRadius = 0.5F;
    static constexpr float tubeHeadRadius = 1.55F;
    static constexpr float flatHeadRadius = 2.1F;
    /// Where the head begins, as a share of the length.
    static constexpr float neck = 0.68F;

    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    /// Faces the eye whatever the direction of the arrow, and is shaded so.
    bool isFlat = false;

    /// Lies across the direction of view.
    static ArrowMesh flat();
    /// Lies across the direction of view as well, with as few triangles as can be: for arrows that
    /// are hardly wider than a pixel.
    static ArrowMesh thin();
    /// A shaft and a cone of that many sides.
    static ArrowMesh tube(unsigned numSides);
};

}
