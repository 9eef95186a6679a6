#pragma once

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics::painter
{

/// As `graphics::paint`, for a size that can be painted.
Image paint(const Scene& scene, const PictureOptions& options, const volatile bool& abortFlag);

}
