#pragma once

#include <tavrin/value/Color.hpp>

namespace tavrin::graphics::painter
{

/// Lengths in pixels, which grow with the picture, and colors of texts and lines.
struct Style
{
    /// 1 in a picture of 1280x960 pixels. Widths of lines and least widths of glyphs are multiples of it.
    double unit;
    double fontSize;
    /// A whole number, so that all lines along the pixel grid look equally wide.
    double lineWidth;
    /// The color of texts and lines, which contrasts with the background.
    Color ink;
    /// The color of the outline, paler than the ink, so that glyphs stand out.
    Color outline;
    Color background;
    /// Whether the picture is large enough for texts.
    bool hasText;

    /// `width` and `height` are those of the picture.
    Style(double width, double height, const Color& background, double fontScale);

    /// The background; white, like paper, where it is transparent.
    Color paper() const;
};

}
