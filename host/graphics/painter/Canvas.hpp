#pragma once

#include "Camera.hpp"

#include <tavrin/graphics/Picture.hpp>

#include <cairo.h>

#include <memory>

namespace tavrin::graphics::painter
{

/// A text around a middle, in pixels.
struct Label
{
    std::string text;
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    /// Read from below.
    bool isVertical = false;

    Frame frame() const { return {x - 0.5 * width, y - 0.5 * height, width, height}; }
};

struct Stroke
{
    std::array<double, 2> from;
    std::array<double, 2> to;
};

/// How large and in which color texts and lines are: they grow with the picture.
struct Style
{
    double fontSize;
    double lineWidth;
    /// What stands out from the background.
    Color ink;
    Color background;

    Style(double width, double height, const Color& background);

    /// Whether there is room for anything but the scene.
    bool hasText;
};

/// The picture as it comes into being: painted tiles, with lines and texts over them.
class Canvas
{
public:
    /// Throws `std::bad_alloc`.
    Canvas(std::size_t width, std::size_t height, const Style& style);

    /// A label whose size is that of its text; invalid UTF-8 becomes question marks.
    Label label(const std::string& text, bool isVertical = false) const;

    /// Puts the pixels of a tile in place: rows from below, colors multiplied by their alpha.
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
