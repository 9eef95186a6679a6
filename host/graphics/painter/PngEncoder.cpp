#include "PngEncoder.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <cairo.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tavrin::graphics::painter
{

namespace
{

cairo_status_t append(void* target, const unsigned char* bytes, unsigned int count)
{
    auto& all = *static_cast<std::vector<std::uint8_t>*>(target);
    all.insert(all.end(), bytes, bytes + count);
    return CAIRO_STATUS_SUCCESS;
}

/// The pixel in the layout of cairo, with colors multiplied by alpha.
std::uint32_t pixelOf(const std::uint8_t* rgba)
{
    const std::uint32_t alpha = rgba[3];
    const auto part = [&](std::size_t i) { return (rgba[i] * alpha + 127U) / 255U; };
    return alpha << 24U | part(0) << 16U | part(1) << 8U | part(2);
}

}

std::vector<std::uint8_t> encodePng(const Image& image)
{
    bool isOpaque = true;
    for (std::size_t i = 3; i < image.rgba.size(); i += 4)
        isOpaque = isOpaque && image.rgba[i] == 255;
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(isOpaque ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32,
                                   static_cast<int>(image.width), static_cast<int>(image.height)),
        &cairo_surface_destroy);
    unsigned char* const data = cairo_image_surface_get_data(surface.get());
    if (data == nullptr || image.rgba.size() != image.width * image.height * 4)
        throw runtime_error("an image of " + std::to_string(image.width) + "x" +
                            std::to_string(image.height) + " pixels cannot be encoded");
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (std::size_t row = 0; row < image.height; ++row)
        for (std::size_t column = 0; column < image.width; ++column)
        {
            const std::uint32_t pixel =
                pixelOf(image.rgba.data() + (row * image.width + column) * 4);
            std::memcpy(data + row * stride + column * 4, &pixel, sizeof(pixel));
        }
    cairo_surface_mark_dirty(surface.get());

    std::vector<std::uint8_t> bytes;
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface.get(), &append, &bytes);
    if (status != CAIRO_STATUS_SUCCESS)
        throw runtime_error(std::string("the picture cannot be encoded: ") +
                            cairo_status_to_string(status));
    return bytes;
}

}
