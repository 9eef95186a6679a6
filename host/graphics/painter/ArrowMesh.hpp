#pragma once

#include <tavrin/value/Tensor.hpp>

#include <array>
#include <cstdint>
#include <vector>

namespace tavrin::graphics::painter
{

/// The triangles of an arrow of length 1 and width 1. The first two coordinates are in units of the
/// width (across the arrow and toward the eye), the third runs from 0 at the tail to 1 at the tip.
struct ArrowMesh
{
    struct Vertex
    {
        Tensor<float, 3> position;
        /// Perpendicular to the surface; need not have length 1.
        Tensor<float, 3> normal;
    };

    /// Radii in units of the width.
    static constexpr float shaftRadius = 0.5F;
    static constexpr float tubeHeadRadius = 1.55F;
    static constexpr float flatHeadRadius = 2.1F;
    /// Where the head begins, as a fraction of the length.
    static constexpr float neck = 0.68F;

    /// The corners of a flat arrow, across it and along it, from the tail at the left clockwise as seen
    /// with the tip at the top.
    static constexpr std::array<Tensor<float, 2>, 7> flatOutline(float headRadius)
    {
        return {Tensor<float, 2>(-shaftRadius, 0.0F),
                {-shaftRadius, neck},
                {-headRadius, neck},
                {0.0F, 1.0F},
                {headRadius, neck},
                {shaftRadius, neck},
                {shaftRadius, 0.0F}};
    }

    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    /// Whether the arrow has no thickness and is not shaded.
    bool isFlat = false;

    /// A flat arrow that faces the eye.
    static ArrowMesh flat(float headRadius);
    /// A shaft and a cone with `numSides` sides each.
    static ArrowMesh tube(unsigned numSides);
};

}
