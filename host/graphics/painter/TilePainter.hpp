#pragma once

#include "PictureLayout.hpp"
#include "WorkMeter.hpp"

namespace tavrin::graphics::painter
{

/// Paints the drawables of a scene with OpenGL and lays them over the canvas, tile by tile. Throws what
/// `OffscreenContext`, `Program` and `RenderTarget` throw.
void paintTiles(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter);

}
