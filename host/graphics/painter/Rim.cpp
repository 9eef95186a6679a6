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

Rim rimFor(const Color& color, const Style& style)
{
    // From no need for a rim to a full one.
    constexpr double enough = 3.0;
    constexpr double faint = 1.5;
    const double lack =
        std::clamp((enough - contrastOf(color, style.paper())) / (enough - faint), 0.0, 1.0);
    const auto between = [](float part, float inkPart) { return 0.5F * (part + inkPart); };
    return {{between(color.red, style.ink.red), between(color.green, style.ink.green),
             between(color.blue, style.ink.blue), color.alpha},
            lack * lack * (3.0 - 2.0 * lack) * style.unit};
}

}
