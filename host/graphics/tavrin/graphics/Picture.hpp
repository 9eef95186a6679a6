#pragma once

#include <tavrin/algorithm/Progress.hpp>
#include <tavrin/graphics/Scene.hpp>

#include <cstddef>
#include <cstdint>

namespace tavrin::graphics
{

/// The direction from which a scene is seen.
struct TAVRIN_API View
{
    /// Degrees: the direction from the scene to the eye, turned about z from x toward y, and then
    /// raised toward z.
    double azimuth = 0.0;
    double elevation = 0.0;

    bool operator==(const View&) const = default;

    /// Reads "x", "-x", "y", "-y", "z", "-z" (the side on which the eye is), "iso", or
    /// "AZIMUTH,ELEVATION" in degrees, the elevation in -90 to 90. Throws `usage_error`.
    static View fromText(const std::string& text);
};

struct PictureOptions
{
    /// Pixels; see `checkPictureSize`.
    std::size_t width = 1280;
    std::size_t height = 960;
    /// May be transparent.
    Color background{1.0F, 1.0F, 1.0F, 1.0F};
    /// By default, a scene that is flat along an axis is seen along it, and any other from the front
    /// right above. A view along an axis is a parallel projection, all others are in perspective.
    std::optional<View> view = std::nullopt;
};

/// Throws `usage_error` for a size that cannot be painted: each side must be 1 to 16384 pixels.
TAVRIN_API void checkPictureSize(std::size_t width, std::size_t height);

struct Image
{
    std::size_t width = 0;
    std::size_t height = 0;
    /// Red, green, blue and alpha of each pixel, 0 to 255, row by row from the top. The alpha is
    /// not multiplied in.
    std::vector<std::uint8_t> rgba;
};

/// Paints a scene without a display, in software where there is no graphics processor. The camera
/// is placed so that everything fits. The same input gives the same picture, whatever the order of
/// transparent drawables.
///
/// Painting happens in a process of its own, which is killed within a fraction of a second after
/// `abortFlag` is set. `observer`, which may be null, hears of the work under the title "painting".
/// Throws `usage_error` for an impossible size, `runtime_error` "aborted" after an abort, with a
/// message such as "no OpenGL 3.3 context without a display: CAUSE" or "FILE: CAUSE" for a shader
/// that cannot be compiled, or where the graphics driver crashes, and `std::bad_alloc`.
TAVRIN_API Image paint(const Scene& scene, const PictureOptions& options,
                       const volatile bool& abortFlag, ProgressObserver* observer = nullptr);

/// The bytes of the image as a PNG file. Throws `runtime_error` where the size of `rgba` does not
/// match the image's width and height, and "aborted" as `paint`.
TAVRIN_API std::vector<std::uint8_t> encodePng(const Image& image, const volatile bool& abortFlag);

}
