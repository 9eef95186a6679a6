#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/colormap/ColorSpace.hpp>
#include <tavrin/value/Color.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tavrin
{

/// From `low` up to `high`, both included.
struct ValueRange
{
    double low = 0.0;
    double high = 1.0;

    /// Whether something can be spread over it: low < high, and both and their distance finite.
    bool isProper() const;

    bool operator==(const ValueRange&) const = default;
};

/// Gives every number a color: that of the control points, and between two of them what their
/// color space says, to 1/255 of a component.
class TAVRIN_API ColorMap
{
public:
    struct ControlPoint
    {
        double position;
        Color color;
    };

    struct Definition
    {
        /// For people; may be empty.
        std::string name;
        ColorSpace space = ColorSpace::Rgb;
        /// At least two, in ascending order, the first before the last. Two points at one position
        /// make a jump.
        std::vector<ControlPoint> points;
        /// Of a value that is not a number.
        Color notANumber{0.5F, 0.5F, 0.5F, 1.0F};
        /// Of values below the first and above the last point; the colors of those points where
        /// nothing is given.
        std::optional<Color> below;
        std::optional<Color> above;
    };

    /// Throws `runtime_error` for points that are not as they must be and for components of colors
    /// outside 0..1.
    explicit ColorMap(Definition definition);

    const std::string& name() const { return mDefinition.name; }

    /// The control points and all else that the map is made of.
    const Definition& definition() const { return mDefinition; }

    /// From the first to the last control point: 0 to 1 for the built-in maps, whatever a file says
    /// for others.
    ValueRange range() const;

    /// The direct lookup: the color at a position on the control points' own scale. At a jump it
    /// is the lower color.
    Color mapValueToColor(double value) const;

    /// The same colors over another range. Throws `runtime_error` for one that is not proper.
    ColorMap stretchedTo(const ValueRange& newRange) const;

private:
    Definition mDefinition;
    /// Control points between which the colors are linear in red, green and blue.
    std::vector<double> mPositions;
    std::vector<Color> mColors;
};

}
