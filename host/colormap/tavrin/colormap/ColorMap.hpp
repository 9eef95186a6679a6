#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/colormap/ColorSpace.hpp>
#include <tavrin/value/Color.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tavrin
{

/// The values from `low` to `high`, both included.
struct ValueRange
{
    double low = 0.0;
    double high = 1.0;

    /// Whether a color map can span it: low < high, with both and their difference finite.
    bool isProper() const;

    bool operator==(const ValueRange&) const = default;
};

/// Maps numbers to colors. Between control points, colors are interpolated in a color space, to
/// 1/255 of a component.
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
        /// Shown to the user; may be empty.
        std::string name;
        ColorSpace space = ColorSpace::Rgb;
        /// At least two, in ascending order, the first below the last. Two points at one position
        /// make a jump.
        std::vector<ControlPoint> points;
        /// The color of NaN.
        Color notANumber{0.5F, 0.5F, 0.5F, 1.0F};
        /// The colors of values below the first and above the last point; by default those of
        /// these points.
        std::optional<Color> below;
        std::optional<Color> above;
    };

    /// Throws `runtime_error` for control points other than described above, and for components of
    /// colors outside 0..1.
    explicit ColorMap(Definition definition);

    const std::string& name() const { return mDefinition.name; }

    /// What the map was made from.
    const Definition& definition() const { return mDefinition; }

    /// From the first to the last control point: 0 to 1 for built-in maps, any range for maps from
    /// files.
    ValueRange range() const;

    /// The direct lookup: the color of a value on the scale of the control points. At a jump it is
    /// the lower color.
    Color mapValueToColor(double value) const;

    /// The same colors over another range. Throws `runtime_error` if that is not proper.
    ColorMap stretchedTo(const ValueRange& newRange) const;

private:
    Definition mDefinition;
    /// Positions and colors between which red, green and blue are linear.
    std::vector<double> mPositions;
    std::vector<Color> mColors;
};

}
