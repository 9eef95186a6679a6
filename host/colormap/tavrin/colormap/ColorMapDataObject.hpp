#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/colormap/ColorMap.hpp>

namespace tavrin
{

/// A color map together with the range of values that it is scaled to.
///
/// The map itself, `colorMap()`, looks up values on its own scale, which is 0 to 1 for a built-in
/// map. `mapValueToColorScaled` stretches the map over the range of the scaling.
class TAVRIN_API ColorMapDataObject final : public DataObject
{
public:
    /// Scaled to the map's own range, so that both lookups agree.
    explicit ColorMapDataObject(ColorMap colorMap);

    /// Throws `runtime_error` if the range is not proper.
    ColorMapDataObject(ColorMap colorMap, const ValueRange& scaling);

    const ColorMap& colorMap() const { return mColorMap; }

    /// The values that the scaled lookup maps to the first and the last color.
    const ValueRange& scaling() const { return mScaling; }

    /// The color of a value after linear scaling to the map's range.
    Color mapValueToColorScaled(double value) const;

    static const TypeId<ColorMapDataObject>& classTypeId()
    {
        return typeId<ColorMapDataObject, DataObject>("ColorMapDataObject", "color map");
    }

private:
    ColorMap mColorMap;
    ValueRange mScaling;
};

}
