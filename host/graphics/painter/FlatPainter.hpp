#pragma once

#include "PictureLayout.hpp"
#include "WorkMeter.hpp"

namespace tavrin::graphics::painter
{

/// Whether a scene consists of opaque flat arrows and segments only.
bool isFlat(const Scene& scene);

/// Draws such a scene into the pixels of a canvas, in the order of `glyphsFarToNear`. This needs no
/// graphics system, and time for many long arrows that cover one another is bounded; see `SampleBand`.
void paintFlat(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter);

}
