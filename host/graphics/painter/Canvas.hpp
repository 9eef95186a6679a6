#pragma once

#include "TextMeter.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <span>

namespace tavrin::graphics::painter
{

struct Stroke
{
    std::array<double, 2> from;
    std::array<double, 2> to;
};

/// The picture while it is being composed. Coordinates are pixels in every format.
class Canvas
{
public:
    using Pixel = std::array<double, 2>;

    /// A canvas for pixels, or for a scalable format. Throws `std::bad_alloc`.
    Canvas(std::size_t width, std::size_t height, const Style& style,
           std::optional<PictureFormat> format);

    /// Whether lines and texts remain vectors.
    bool isScalable() const
    {
        return mFormat == PictureFormat::Svg || mFormat == PictureFormat::Pdf;
    }

    /// Draws pixels over a part of the picture. `pixels` holds rows from the top, with colors multiplied
    /// by their alpha.
    void drawPixels(const Frame& frame, const std::vector<std::uint8_t>& pixels);

    /// Draws the pixels of a canvas of the same size that is not scalable.
    void draw(const Canvas& other);

    /// A line of the style's width, aligned with the pixel grid where it runs along it.
    void draw(const Stroke& stroke, const Color& color);
    void draw(const Stroke& stroke, const Color& color, double lineWidth);
    void draw(const Label& label);
    void fill(const Frame& frame, const Color& color);
    void fillPolygon(std::span<const Pixel> corners, const Color& color);
    /// A closed line along the polygon.
    void outlinePolygon(std::span<const Pixel> corners, const Color& color, double lineWidth);

    /// The pixels of a canvas that is not scalable.
    Image image() const;
    /// The content of the file of a scalable canvas, on which nothing can be drawn afterwards.
    std::vector<std::uint8_t> finishFile(const std::string& title);

private:
    using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

    Surface makeSurface();
    void useColor(const Color& color, double alpha = 1.0) const;
    void trace(std::span<const Pixel> corners);

    std::size_t mWidth;
    std::size_t mHeight;
    Style mStyle;
    std::optional<PictureFormat> mFormat;
    /// What a scalable surface has written.
    std::vector<std::uint8_t> mFile;
    Surface mSurface;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> mContext;
};

}
