#include "Rim.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin::graphics::painter
{

namespace
{

double luminance(const Color& color)
{
    const auto linear = [](float part)
    { return std::pow(std::clamp<double>(part, 0.0, 1.0), 2.2); };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

/// From 0 for a color that stands out from the background to 1 for one that hardly does.
double lackOfContrast(const Color& color, const Style& style)
{
    constexpr double enough = 3.0;
    constexpr double faint = 1.5;
    const double contrast = contrastOf(color, style.paper());
    const double lack = std::clamp((enough - contrast) / (enough - faint), 0.0, 1.0);
    return lack * lack * (3.0 - 2.0 * lack);
}

/// The opacity is that of `a`.
Color mixed(const Color& a, const Color& b, float shareOfB)
{
    return {std::lerp(a.red, b.red, shareOfB), std::lerp(a.green, b.green, shareOfB),
            std::lerp(a.blue, b.blue, shareOfB), a.alpha};
}

}

double contrastOf(const Color& a, const Color& b)
{
    const auto [darker, brighter] = std::minmax({luminance(a), luminance(b)});
    return (brighter + 0.05) / (darker + 0.05);
}

Rim rimFor(const Color& color, double width, const Style& style)
{
    constexpr double mostOuterShare = 0.4;
    constexpr double mostInnerShare = 0.12;
    const double lack = lackOfContrast(color, style);
    // A transparent background has no color in which a line would be invisible.
    const bool hasNoInnerRim = lack == 0.0 && style.background.alpha < 1.0F;
    const Color visible = mixed(color, style.ink, 0.5F);
    return {.outerColor = visible,
            .outerWidth = lack * std::min(style.unit, mostOuterShare * width),
            .innerColor = lack > 0.0 ? visible : style.background,
            .innerWidth = hasNoInnerRim ? 0.0 : std::min(0.6 * style.unit, mostInnerShare * width)};
}

Color tubeColorFor(const Color& color, const Style& style)
{
    constexpr double mostInk = 0.35;
    if (luminance(style.ink) < luminance(style.paper()))
        return color;
    return mixed(color, style.ink, static_cast<float>(mostInk * lackOfContrast(color, style)));
}

}
