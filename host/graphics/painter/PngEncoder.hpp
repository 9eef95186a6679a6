#pragma once

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics::painter
{

/// The bytes of a PNG file. Throws `runtime_error` if the image is empty or too large, or `rgba`
/// does not match its size.
std::vector<std::uint8_t> encodePng(const Image& image);

}
