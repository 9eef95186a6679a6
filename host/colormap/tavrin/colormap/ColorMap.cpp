#include <tavrin/colormap/ColorMap.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrin
{

namespace
{

/// Linear pieces over the whole range of a map, enough to reproduce any color space to 1/255.
constexpr double piecesPerMap = 512.0;

void requireColor(const Color& color, const std::string& what)
{
    const std::array components{color.red, color.green, color.blue, color.alpha};
    const bool isColor = std::ranges::all_of(components, [](float component)
                                             { return component >= 0.0F && component <= 1.0F; });
    if (!isColor)
        throw runtime_error(what + " has a component outside 0..1");
}

void requireSound(const ColorMap::Definition& definition)
{
    const auto& points = definition.points;
    if (points.size() < 2)
        throw runtime_error("a color map needs at least two control points, not " +
                            std::to_string(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const std::string name = "control point " + std::to_string(i);
        const double position = points[i].position;
        if (!std::isfinite(position))
            throw runtime_error(name + " is at " + toText(position));
        if (i > 0 && position < points[i - 1].position)
            throw runtime_error(name + " at " + toText(position) + " follows one at " +
                                toText(points[i - 1].position) + "; the positions must ascend");
        requireColor(points[i].color, "the color of " + name);
    }
    if (!ValueRange{points.front().position, points.back().position}.isProper())
        throw runtime_error("the control points from " + toText(points.front().position) + " to " +
                            toText(points.back().position) + " span no range");
    requireColor(definition.notANumber, "the color for not-a-number");
    if (definition.below)
        requireColor(*definition.below, "the color below the range");
    if (definition.above)
        requireColor(*definition.above, "the color above the range");
}

}

bool ValueRange::isProper() const
{
    // The difference of bounds that are infinite or NaN is not finite.
    return low < high && std::isfinite(high - low);
}

ColorMap::ColorMap(Definition definition) : mDefinition(std::move(definition))
{
    requireSound(mDefinition);
    const auto add = [this](double position, const Color& color)
    {
        mPositions.push_back(position);
        mColors.push_back(color);
    };
    const auto& points = mDefinition.points;
    const double length = range().high - range().low;
    add(points.front().position, points.front().color);
    for (std::size_t i = 1; i < points.size(); ++i)
    {
        const auto& [start, startColor] = points[i - 1];
        const auto& [end, endColor] = points[i];
        if (mDefinition.space == ColorSpace::Step)
            add(start, endColor);
        else if (mDefinition.space != ColorSpace::Rgb && start < end)
        {
            // An even number of pieces: a diverging map bends in the middle.
            const double pieces =
                2.0 * std::max(8.0, std::round(0.5 * piecesPerMap * ((end - start) / length)));
            for (double piece = 1.0; piece < pieces; ++piece)
                add(std::lerp(start, end, piece / pieces),
                    interpolate(startColor, endColor, piece / pieces, mDefinition.space));
        }
        add(end, endColor);
    }
}

ValueRange ColorMap::range() const
{
    return {mDefinition.points.front().position, mDefinition.points.back().position};
}

Color ColorMap::mapValueToColor(double value) const
{
    if (std::isnan(value))
        return mDefinition.notANumber;
    if (value < mPositions.front())
        return mDefinition.below.value_or(mColors.front());
    if (value > mPositions.back())
        return mDefinition.above.value_or(mColors.back());
    const auto found = std::ranges::lower_bound(mPositions, value);
    const auto upper = static_cast<std::size_t>(found - mPositions.begin());
    if (upper == 0)
        return mColors.front();
    const double start = mPositions[upper - 1];
    const double weight = (value - start) / (mPositions[upper] - start);
    return interpolate(mColors[upper - 1], mColors[upper], weight, ColorSpace::Rgb);
}

ColorMap ColorMap::stretchedTo(const ValueRange& newRange) const
{
    if (!newRange.isProper())
        throw runtime_error("a color map cannot span " + toText(newRange.low) + " to " +
                            toText(newRange.high));
    const ValueRange own = range();
    Definition stretched = mDefinition;
    for (ControlPoint& point : stretched.points)
        point.position = std::lerp(newRange.low, newRange.high,
                                   (point.position - own.low) / (own.high - own.low));
    return ColorMap(std::move(stretched));
}

}
