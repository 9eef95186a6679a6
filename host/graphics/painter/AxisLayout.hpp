#pragma once

#include "Canvas.hpp"

namespace tavrin::graphics::painter
{

/// Texts and lines around the scene.
struct Annotation
{
    std::vector<Stroke> strokes;
    std::vector<Label> labels;

    void moveBy(double x, double y);
};

/// Lays out ticks, numbers and names along edges at the silhouette of the domain's outline: one edge
/// for each axis that is long enough in the picture. Where the scene, whose `extremes` are placed
/// positions, reaches beyond the edge, the axis is a line beside the scene. A label that would overlap
/// another one is left out.
Annotation layOutAxes(const Box& outline, std::span<const Position> extremes,
                      const Placement& placement, const Camera& camera, const TextMeter& meter);

/// The edges of the domain's outline, without those that lie in front of its inside.
std::vector<Stroke> layOutOutline(const Box& outline, const Placement& placement,
                                  const Camera& camera);

/// The corners of a box in the user's coordinates. Bit i of a corner's index tells whether it is at
/// the upper end of axis i.
std::array<Position, 8> cornersOf(const Position& lower, const Position& upper);

}
