#pragma once

#include "Canvas.hpp"

namespace tavrin::graphics::painter
{

/// The positions of texts and tick marks in the picture.
struct Annotation
{
    std::vector<Stroke> strokes;
    std::vector<Label> labels;
};

/// Lays out ticks, numbers and names along edges at the silhouette of the domain's outline: one edge
/// for each axis that is long enough in the picture. They keep clear of the scene, whose `extremes`
/// are placed positions. A label that would overlap another one is left out.
Annotation layOutAxes(const Box& outline, std::span<const Position> extremes,
                      const Placement& placement, const Camera& camera, const Canvas& canvas,
                      const Style& style);

/// The corners of a box in the user's coordinates. Bit i of a corner's index tells whether it is at
/// the upper end of axis i.
std::array<Position, 8> cornersOf(const Position& lower, const Position& upper);

}
