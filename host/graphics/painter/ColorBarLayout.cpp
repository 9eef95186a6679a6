#include "ColorBarLayout.hpp"

#include "Ticks.hpp"

#include <algorithm>

namespace tavrin::graphics::painter
{

namespace
{

/// A vertical label for a text, which is truncated if it is longer than `length`.
Label titleFor(std::string text, double length, const Canvas& canvas)
{
    Label title = canvas.label(text, true);
    while (title.height > length && !text.empty())
    {
        // Removes whole characters: bytes 10xxxxxx continue one.
        do
        {
            const bool continues = (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80U;
            text.pop_back();
            if (!continues)
                break;
        } while (!text.empty());
        title = canvas.label(text + "\u2026", true);
    }
    return title;
}

}

ColorBarLayout::ColorBarLayout(const ColorBar& bar, const Frame& picture, const Frame& scene,
                               const Canvas& canvas, const Style& style)
    : mColorBar(bar)
{
    const double barWidth = std::round(1.1 * style.fontSize);
    const double leastHeight = 8.0 * style.fontSize;
    const double barHeight = std::round(std::min(
        {0.66 * picture.height, 36.0 * style.fontSize, std::max(scene.height, leastHeight)}));
    const double top = std::clamp(scene.top + 0.5 * (scene.height - barHeight), picture.top,
                                  picture.bottom() - barHeight);
    const double tickLength = 0.3 * style.fontSize;
    const double gap = 0.35 * style.fontSize;

    const Ticks ticks = Ticks::between(
        bar.low, bar.high,
        static_cast<unsigned>(std::clamp(barHeight / (2.6 * style.fontSize), 2.0, 9.0)));
    std::vector<Label> numbers;
    double numberWidth = 0.0;
    for (const std::string& text : ticks.labels)
    {
        numbers.push_back(canvas.label(text));
        numberWidth = std::max(numberWidth, numbers.back().width);
    }
    Label title = titleFor(bar.title + ticks.titleSuffix, picture.height, canvas);
    const double titleWidth = title.text.empty() ? 0.0 : title.width + 2.2 * gap;

    mBar = {std::round(picture.right() - titleWidth - numberWidth - gap - tickLength - barWidth),
            std::round(top), barWidth, barHeight};
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const double share =
            bar.high != bar.low ? (ticks.values[i] - bar.low) / (bar.high - bar.low) : 0.5;
        const double y = mBar.bottom() - share * barHeight;
        mAnnotation.strokes.push_back({{mBar.right(), y}, {mBar.right() + tickLength, y}});
        numbers[i].x = mBar.right() + tickLength + gap + 0.5 * numbers[i].width;
        numbers[i].y = y;
        mAnnotation.labels.push_back(std::move(numbers[i]));
    }
    if (!title.text.empty())
    {
        title.x = picture.right() - 0.5 * title.width;
        title.y = std::clamp(mBar.top + 0.5 * barHeight, picture.top + 0.5 * title.height,
                             picture.bottom() - 0.5 * title.height);
        mAnnotation.labels.push_back(std::move(title));
    }
}

void ColorBarLayout::draw(Canvas& canvas) const
{
    for (double row = 0.0; row < mBar.height; ++row)
    {
        const double share = 1.0 - (row + 0.5) / mBar.height;
        const double value = mColorBar.low + share * (mColorBar.high - mColorBar.low);
        canvas.fill({mBar.left, mBar.top + row, mBar.width, 1.0}, mColorBar.color(value));
    }
    canvas.outline(mBar);
    for (const Stroke& stroke : mAnnotation.strokes)
        canvas.draw(stroke);
    for (const Label& label : mAnnotation.labels)
        canvas.draw(label);
}

}
