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

}

double contrastOf(const Color& a, const Color& b)
{
    const auto [darker, brighter] = std::minmax({luminance(a), luminance(b)});
    return (brighter + 0.05) / (darker + 0.05);
}

Rim rimFor(const Color& color, double width, const Style& style)
{
    // From no need for a rim to a full one.
    constexpr double enough = 3.0;
    constexpr double faint = 1.5;
    constexpr double mostOuterShare = 0.4;
    constexpr double mostInnerShare = 0.12;
    const double contrast = contrastOf(color, style.paper());
    const double lack = std::clamp((enough - contrast) / (enough - faint), 0.0, 1.0);
    // A line in the color of the background, which would not be seen on any other.
    const bool isInvisible = lack == 0.0 && style.background.alpha < 1.0F;
    const auto between = [](const Color& a, const Color& b)
    {
        return Color{0.5F * (a.red + b.red), 0.5F * (a.green + b.green), 0.5F * (a.blue + b.blue),
                     a.alpha};
    };
    return {.outerColor = between(color, style.ink),
            .outerWidth =
                lack * lack * (3.0 - 2.0 * lack) * std::min(style.unit, mostOuterShare * width),
            .innerColor = lack > 0.0 ? between(color, style.ink) : style.background,
            .innerWidth = isInvisible ? 0.0 : std::min(0.6 * style.unit, mostInnerShare * width)};
}

}
