#include "Style.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin::graphics::painter
{

Style::Style(double width, double height, const Color& pictureBackground, double fontScale)
    : background(pictureBackground)
{
    const double base = std::min(0.75 * width, height);
    unit = base / 960.0;
    fontSize = std::max(22.5 * unit, 10.0) * fontScale;
    lineWidth = std::max(std::round(1.2 * unit), 1.0);
    hasText = width >= 200.0 && height >= 150.0;
    const Color paperColor = paper();
    const float brightness =
        0.3F * paperColor.red + 0.59F * paperColor.green + 0.11F * paperColor.blue;
    const float gray = brightness > 0.45F ? 0.12F : 0.92F;
    ink = {gray, gray, gray, 1.0F};
    const auto mixed = [](float inkPart, float paperPart)
    { return 0.6F * inkPart + 0.4F * paperPart; };
    outline = {mixed(gray, paperColor.red), mixed(gray, paperColor.green),
               mixed(gray, paperColor.blue), 1.0F};
}

Color Style::paper() const
{
    const auto over = [&](float part) { return part * background.alpha + 1.0F - background.alpha; };
    return {over(background.red), over(background.green), over(background.blue), 1.0F};
}

}
