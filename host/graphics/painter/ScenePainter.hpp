#pragma once

#include "WorkMeter.hpp"

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics::painter
{

/// Paints a scene as `graphics::paint`, in this process, for a size that can be painted.
Image paint(const Scene& scene, const PictureOptions& options, WorkMeter& meter);

}
