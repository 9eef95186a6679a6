#pragma once

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics::painter
{

/// The bytes of a PNG file. Throws `runtime_error` where the image has no pixels or too many.
std::vector<std::uint8_t> encodePng(const Image& image);

}
