#include "ColorBarLayout.hpp"

#include "Ticks.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin::graphics::painter
{

ColorBarLayout::ColorBarLayout(const ColorBar& bar, double left, const Frame& scene,
                               double mostHeight, const TextMeter& meter)
    : mColorBar(bar), mPoint(std::round(1.1 * meter.fontSize()))
{
    const double fontSize = meter.fontSize();
    const double barWidth = std::round(1.1 * fontSize);
    const double barHeight = std::round(
        std::min({0.66 * mostHeight, 36.0 * fontSize, std::max(scene.height, 8.0 * fontSize)}));
    const double tickLength = 0.3 * fontSize;
    const double gap = 0.35 * fontSize;
    mBar = {std::round(left), std::round(scene.middleY() - 0.5 * barHeight), barWidth, barHeight};

    const Ticks ticks =
        Ticks::between(bar.low, bar.high,
                       static_cast<unsigned>(std::clamp(barHeight / (2.6 * fontSize), 2.0, 9.0)));
    double numberWidth = 0.0;
    for (std::size_t i = 0; i < ticks.values.size(); ++i)
    {
        const double share =
            bar.high != bar.low ? (ticks.values[i] - bar.low) / (bar.high - bar.low) : 0.5;
        const double y = mBar.bottom() - share * barHeight;
        mAnnotation.strokes.push_back({{mBar.right(), y}, {mBar.right() + tickLength, y}});
        Label number = meter.label(ticks.labels[i]);
        number.x = mBar.right() + tickLength + gap + 0.5 * number.width;
        number.y = y;
        numberWidth = std::max(numberWidth, number.width);
        mAnnotation.labels.push_back(std::move(number));
    }
    Label title = meter.label(bar.title + ticks.titleSuffix, true, 1.0, mostHeight);
    if (title.text.empty())
        return;
    title.x = mBar.right() + tickLength + numberWidth + 3.2 * gap + 0.5 * title.width;
    title.y = mBar.middleY();
    mAnnotation.labels.push_back(std::move(title));
}

std::vector<Canvas::Pixel> ColorBarLayout::outline() const
{
    std::vector<Canvas::Pixel> corners{{mBar.left, mBar.bottom()}};
    if (mColorBar.isClampedBelow)
        corners.push_back({mBar.middleX(), mBar.bottom() + mPoint});
    corners.push_back({mBar.right(), mBar.bottom()});
    corners.push_back({mBar.right(), mBar.top});
    if (mColorBar.isClampedAbove)
        corners.push_back({mBar.middleX(), mBar.top - mPoint});
    corners.push_back({mBar.left, mBar.top});
    return corners;
}

Frame ColorBarLayout::frame() const
{
    Frame frame = mBar;
    for (const auto& corner : outline())
        frame = frame.unitedWith({corner[0], corner[1], 0.0, 0.0});
    for (const Label& label : mAnnotation.labels)
        frame = frame.unitedWith(label.frame());
    return frame;
}

void ColorBarLayout::moveBy(double x, double y)
{
    mBar = mBar.movedBy(x, y);
    mAnnotation.moveBy(x, y);
}

void ColorBarLayout::draw(Canvas& canvas, const Style& style) const
{
    const double range = mColorBar.high - mColorBar.low;
    const auto cornersAt = [&](double base, double tip)
    {
        return std::array<Canvas::Pixel, 3>{
            {{mBar.left, base}, {mBar.right(), base}, {mBar.middleX(), tip}}};
    };
    if (mColorBar.isClampedBelow)
        canvas.fillPolygon(cornersAt(mBar.bottom(), mBar.bottom() + mPoint),
                           mColorBar.color(mColorBar.low - range));
    if (mColorBar.isClampedAbove)
        canvas.fillPolygon(cornersAt(mBar.top, mBar.top - mPoint),
                           mColorBar.color(mColorBar.high + range));
    // Each color is drawn down to the lower end, so that viewers show no seams between rows.
    std::optional<Color> previous;
    for (double row = 0.0; row < mBar.height; ++row)
    {
        const double share = 1.0 - (row + 0.5) / mBar.height;
        const Color color = mColorBar.color(mColorBar.low + share * range);
        if (color != previous)
            canvas.fill({mBar.left, mBar.top + row, mBar.width, mBar.height - row}, color);
        previous = color;
    }
    const auto corners = outline();
    for (std::size_t i = 0; i < corners.size(); ++i)
        canvas.draw({corners[i], corners[(i + 1) % corners.size()]}, style.ink);
    for (const Stroke& stroke : mAnnotation.strokes)
        canvas.draw(stroke, style.ink);
    for (const Label& label : mAnnotation.labels)
        canvas.draw(label);
}

}
