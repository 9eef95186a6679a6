#pragma once

#include "Style.hpp"

namespace tavrin::graphics::painter
{

/// Lines around a glyph. The glyph itself keeps its color, so that it agrees with the color bar.
struct Rim
{
    /// Toward the background, around a glyph whose color is too close to that. It lies below all glyphs.
    Color outerColor;
    /// Pixels, at most those of the picture's unit and less than half of the glyph; 0 for a color that
    /// contrasts enough.
    double outerWidth = 0.0;
    /// Toward glyphs below it, narrow compared to the glyph. Where glyphs cover the picture several
    /// times, these lines would be most of what is seen.
    Color innerColor;
    double innerWidth = 0.0;
};

/// The contrast of two colors, 1 to 21: Web Content Accessibility Guidelines 2.1, with a gamma of 2.2.
double contrastOf(const Color& a, const Color& b);

/// Glyphs that cover the picture more often have no inner rims.
constexpr double mostCoverWithInnerRims = 1.5;

/// The rim of a glyph that is `width` pixels wide.
Rim rimFor(const Color& color, double width, const Style& style);

}
