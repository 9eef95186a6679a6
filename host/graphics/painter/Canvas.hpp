#pragma once

#include "Camera.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <cairo.h>

#include <memory>

namespace tavrin::graphics::painter
{

/// A text centered at a pixel.
struct Label
{
    std::string text;
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    /// Whether the text runs upward.
    bool isVertical = false;

    Frame frame() const { return {x - 0.5 * width, y - 0.5 * height, width, height}; }
};

struct Stroke
{
    std::array<double, 2> from;
    std::array<double, 2> to;
};

/// Sizes, which grow with the picture, and colors of texts and lines.
struct Style
{
    double fontSize;
    double lineWidth;
    /// The color of texts and lines, which contrasts with the background.
    Color ink;
    Color background;

    Style(double width, double height, const Color& background);

    /// Whether the picture is large enough for texts.
    bool hasText;
};

/// The picture while it is being composed: painted tiles, with lines and texts over them.
class Canvas
{
public:
    /// Throws `std::bad_alloc`.
    Canvas(std::size_t width, std::size_t height, const Style& style);

    /// A label at the origin with the size of its text. Bytes that are not valid UTF-8 become question
    /// marks.
    Label label(const std::string& text, bool isVertical = false) const;

    /// Copies the pixels of a tile into the picture. `pixels` holds rows from below, with colors
    /// multiplied by their alpha.
    void setTile(const Frame& tile, const std::vector<std::uint8_t>& pixels);

    void draw(const Stroke& stroke);
    void draw(const Label& label);
    void fill(const Frame& frame, const Color& color);
    void outline(const Frame& frame);

    Image image() const;

private:
    void useColor(const Color& color, double alpha = 1.0) const;

    std::size_t mWidth;
    std::size_t mHeight;
    Style mStyle;
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> mSurface;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> mContext;
};

}
