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
    /// By default, a scene that is flat along an axis is seen along it, and any other from above the
    /// front right corner. A view along an axis is a parallel projection, any other is in perspective.
    std::optional<View> view = std::nullopt;
    /// UTF-8, drawn above the scene, with the scene's time below it in a smaller font. Each is truncated
    /// if it is too long for the picture.
    std::string title = {};
    /// Factor of the size of all texts, which otherwise follows from the size of the picture; see
    /// `checkFontScale`.
    double fontScale = 1.0;
    /// Whether the picture is cropped to its content and a small margin. It is then not larger than
    /// `width` x `height`, unless texts are.
    bool crop = false;
};

/// Throws `usage_error` for a size that cannot be painted: each side must be 1 to 16384 pixels.
TAVRIN_API void checkPictureSize(std::size_t width, std::size_t height);

/// Throws `usage_error` for a factor of the size of texts that is not between 0.1 and 10.
TAVRIN_API void checkFontScale(double scale);

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
/// `abortFlag` is set. `observer`, which may be null, follows the work under the title "painting".
/// Throws `usage_error` for an impossible size, `runtime_error` "aborted" after an abort, with a
/// message such as "no OpenGL 3.3 context without a display: CAUSE" or "FILE: CAUSE" for a shader
/// that cannot be compiled, or where the graphics driver crashes, and `std::bad_alloc`.
TAVRIN_API Image paint(const Scene& scene, const PictureOptions& options,
                       const volatile bool& abortFlag, ProgressObserver* observer = nullptr);

/// The format of a picture file. The scalable formats, SVG and PDF, hold text, axes and color bar as
/// vectors. They hold up to 10,000 glyphs as vectors; a larger number is embedded as an image.
enum class PictureFormat
{
    Png,
    Svg,
    Pdf
};

/// The format for the extension of a file, such as ".png"; nothing for an extension that no picture
/// has.
TAVRIN_API std::optional<PictureFormat> pictureFormatOf(const std::string& extension);

/// The extensions of picture files: ".png", ".svg", ".pdf".
TAVRIN_API const std::vector<std::string>& pictureExtensions();

/// The content of a picture file.
struct PictureFile
{
    std::vector<std::uint8_t> bytes;
    /// Pixels; a pixel of a scalable picture is 1/96 inch.
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Paints a scene as `paint` and returns the content of a file in the given format. The same input
/// gives the same bytes. `observer` follows the work under the titles "painting" and, for PNG,
/// "encoding". Throws what `paint` throws.
TAVRIN_API PictureFile renderPicture(const Scene& scene, const PictureOptions& options,
                                     PictureFormat format, const volatile bool& abortFlag,
                                     ProgressObserver* observer = nullptr);

}
