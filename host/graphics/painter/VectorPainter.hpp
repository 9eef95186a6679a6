#pragma once

#include "PictureLayout.hpp"
#include "WorkMeter.hpp"

namespace tavrin::graphics::painter
{

/// The number of arrows and segments of a scene.
std::size_t numGlyphs(const Scene& scene);

/// Draws the arrows and segments of a scene as filled polygons and lines, from the farthest to the
/// nearest; of those that are equally far away, shorter ones are on top. A tube is drawn as the
/// silhouettes of its shaft and its head. Glyphs that are not finite are left out.
void paintVectors(const Scene& scene, const PictureLayout& layout, Canvas& canvas,
                  WorkMeter& meter);

}
