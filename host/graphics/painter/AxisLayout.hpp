#pragma once

#include "Canvas.hpp"

namespace tavrin::graphics::painter
{

/// Where the texts and ticks of something lie in the picture.
struct Annotation
{
    std::vector<Stroke> strokes;
    std::vector<Label> labels;
};

/// Ticks, numbers and names along those edges of the domain's outline that no part of the picture
/// hides: one per axis that is seen at some length. They keep clear of the scene, whose
/// extremes are given. Labels that would lie on others are left out.
Annotation layOutAxes(const Box& outline, std::span<const Position> extremes,
                      const Placement& placement, const Camera& camera, const Canvas& canvas,
                      const Style& style);

/// The corners of a box, not placed: bit i of a corner's index says whether it is the upper one
/// along axis i.
std::array<Position, 8> cornersOf(const Position& lower, const Position& upper);

}
