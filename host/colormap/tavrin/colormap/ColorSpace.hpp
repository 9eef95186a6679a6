#pragma once

#include <tavrin/value/Color.hpp>

namespace tavrin
{

/// How the colors between two control points of a color map are found.
enum class ColorSpace
{
    /// Linear in red, green and blue as they are shown.
    Rgb,
    /// Linear in hue, saturation and value; the hue never passes from 1 over to 0.
    Hsv,
    /// Linear in CIELAB (D65), where equal steps look equal.
    Lab,
    /// Linear in the polar form of CIELAB, through white between two saturated colors of different
    /// hue: K. Moreland, Diverging Color Maps for Scientific Visualization, 2009.
    Diverging,
    /// The color of the upper point, without a transition.
    Step
};

/// The color `weight` (0 ... 1) of the way from `lower` to `upper`. Opacity is always linear.
Color interpolate(const Color& lower, const Color& upper, double weight, ColorSpace space);

}
