#pragma once

#include "Style.hpp"

namespace tavrin::graphics::painter
{

/// A line around a glyph whose color is too close to the background to be seen well.
struct Rim
{
    Color color;
    /// Pixels; 0 for a color that contrasts enough.
    double width = 0.0;
};

/// The contrast of two colors, 1 to 21: Web Content Accessibility Guidelines 2.1, with a gamma of 2.2.
double contrastOf(const Color& a, const Color& b);

/// Neither rims nor the fill of glyphs change the glyph's own color, so that it agrees with the color
/// bar. The shaders compute the same in contrast.glsl.
Rim rimFor(const Color& color, const Style& style);

}
