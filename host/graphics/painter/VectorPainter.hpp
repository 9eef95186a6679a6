#pragma once

#include "PictureLayout.hpp"
#include "WorkMeter.hpp"

namespace tavrin::graphics::painter
{

/// Draws the glyphs of a scene as polygons, in the order of `glyphsFarToNear`. A tube is drawn as the
/// silhouettes of its parts.
void paintVectors(const Scene& scene, const PictureLayout& layout, Canvas& canvas,
                  WorkMeter& meter);

}
