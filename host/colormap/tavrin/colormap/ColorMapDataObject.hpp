#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/colormap/ColorMap.hpp>

namespace tavrin
{

/// A color map together with a value scaling.
///
/// The map itself, `colorMap()`, looks a value up directly on its own scale: 0 to 1 for a built-in
/// map. `mapValueToColorScaled` spreads the map over the scaling's range instead.
class TAVRIN_API ColorMapDataObject final : public DataObject
{
public:
    /// Scales by the map's own range: both lookups agree.
    explicit ColorMapDataObject(ColorMap colorMap);

    /// Throws `runtime_error` for a range that is not proper.
    ColorMapDataObject(ColorMap colorMap, const ValueRange& scaling);

    const ColorMap& colorMap() const { return mColorMap; }

    /// The values that get the first and the last color in the scaled lookup.
    const ValueRange& scaling() const { return mScaling; }

    /// The color of a value after the scaling has brought it into the map's range, linearly.
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
