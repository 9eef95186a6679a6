#pragma once

#include <tavrin/value/Color.hpp>

namespace tavrin
{

/// How colors are interpolated between two control points of a color map.
enum class ColorSpace
{
    /// Linear in the red, green and blue of sRGB.
    Rgb,
    /// Linear in hue, saturation and value; the hue does not wrap around from 1 to 0.
    Hsv,
    /// Linear in CIELAB (D65), which is perceptually uniform.
    Lab,
    /// Linear in the polar form of CIELAB, passing through white between two saturated colors of
    /// different hue: K. Moreland, Diverging Color Maps for Scientific Visualization, 2009.
    Diverging,
    /// The color of the upper point throughout.
    Step
};

/// The color between `lower` (weight 0) and `upper` (weight 1). Opacity is always linear.
Color interpolate(const Color& lower, const Color& upper, double weight, ColorSpace space);

}
