#pragma once

#include "../process/PainterJob.hpp"

namespace tavrin::graphics::painter
{

/// The bytes of a PNG file, without an alpha channel where the image is opaque. `work` counts its rows.
/// Throws `runtime_error` and `std::bad_alloc`.
std::vector<std::uint8_t> encodePng(const Image& image, process::Work& work);

}
