#pragma once

#include "Style.hpp"

namespace tavrin::graphics::painter
{

/// Lines around a glyph. The glyph itself keeps its color, so that it agrees with the color bar.
struct Rim
{
    /// Separates a glyph from a background of a similar color. Drawn below all glyphs.
    Color outerColor;
    /// Pixels, at most those of the picture's unit and less than half of the glyph; 0 for a color that
    /// contrasts enough.
    double outerWidth = 0.0;
    /// Separates a glyph from the glyphs below it, and is narrow compared to the glyph. Left out where
    /// glyphs cover the picture several times, because the picture would consist mostly of rims.
    Color innerColor;
    double innerWidth = 0.0;
};

/// The contrast of two colors, 1 to 21: Web Content Accessibility Guidelines 2.1, with a gamma of 2.2.
double contrastOf(const Color& a, const Color& b);

/// The color of a tube: brighter than its own on a dark background from which it would not stand out.
/// Shading darkens tubes, so that they stand out from every bright background.
Color tubeColorFor(const Color& color, const Style& style);

/// Glyphs that cover the picture more often have no inner rims.
constexpr double mostCoverWithInnerRims = 1.5;

/// The rim of a glyph that is `width` pixels wide.
Rim rimFor(const Color& color, double width, const Style& style);

}
