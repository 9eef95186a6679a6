#include <tavrin/colormap/ColorMapDataObject.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>

namespace tavrin
{

ColorMapDataObject::ColorMapDataObject(ColorMap colorMap)
    : mColorMap(std::move(colorMap)), mScaling(mColorMap.range())
{
}

ColorMapDataObject::ColorMapDataObject(ColorMap colorMap, const ValueRange& scaling)
    : mColorMap(std::move(colorMap)), mScaling(scaling)
{
    if (!scaling.isProper())
        throw runtime_error("a color map cannot span " + toText(scaling.low) + " to " +
                            toText(scaling.high));
}

Color ColorMapDataObject::mapValueToColorScaled(double value) const
{
    const auto [low, high] = mColorMap.range();
    const double share = (value - mScaling.low) / (mScaling.high - mScaling.low);
    const double position = low + share * (high - low);
    // Rounding must not move a value within the scaling beyond the last color.
    return mColorMap.mapValueToColor(share <= 1.0 ? std::min(position, high) : position);
}

}
