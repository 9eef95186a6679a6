#pragma once

#include "Camera.hpp"
#include "Style.hpp"

#include <cairo.h>

#include <limits>
#include <memory>
#include <string>

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
    double fontSize = 0.0;

    Frame frame() const { return {x - 0.5 * width, y - 0.5 * height, width, height}; }
};

/// Selects the font of all texts. Its metrics do not depend on the surface, so that a text has the
/// same extent in every format.
void useFont(cairo_t* context, double size);

/// Measures texts.
class TextMeter
{
public:
    /// Throws `std::bad_alloc`.
    explicit TextMeter(const Style& style);

    /// A label at the origin with the size of its text, whose font size is `scale` times that of the
    /// style. Bytes that are not valid UTF-8 become question marks. A text longer than `mostLength`
    /// pixels is truncated and ends in an ellipsis.
    Label label(const std::string& text, bool isVertical = false, double scale = 1.0,
                double mostLength = std::numeric_limits<double>::infinity()) const;

    double fontSize() const { return mFontSize; }

private:
    Label measured(std::string text, double scale) const;

    double mFontSize;
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> mSurface;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> mContext;
};

}
