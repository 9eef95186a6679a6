#include <tavrin/colormap/ColorSpace.hpp>

#include <tavrin/value/Tensor.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavrin
{

namespace
{

using std::numbers::pi;

/// Three coordinates of a color in some space.
using Triple = Tensor<double, 3>;

/// The white of daylight (D65) in CIE XYZ.
const Triple white(0.9505, 1.0, 1.089);

Triple mixed(const Triple& a, const Triple& b, double weight)
{
    return a * (1.0 - weight) + b * weight;
}

double linearFromShown(double shown)
{
    return shown > 0.04045 ? std::pow((shown + 0.055) / 1.055, 2.4) : shown / 12.92;
}

double shownFromLinear(double linear)
{
    return linear > 0.0031308 ? 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055 : linear * 12.92;
}

Triple labFromRgb(const Triple& rgb)
{
    const double r = linearFromShown(rgb[0]);
    const double g = linearFromShown(rgb[1]);
    const double b = linearFromShown(rgb[2]);
    const Triple xyz(0.4124 * r + 0.3576 * g + 0.1805 * b, 0.2126 * r + 0.7152 * g + 0.0722 * b,
                     0.0193 * r + 0.1192 * g + 0.9505 * b);
    const auto compressed = [](double ratio)
    { return ratio > 0.008856 ? std::cbrt(ratio) : 7.787 * ratio + 16.0 / 116.0; };
    const double x = compressed(xyz[0] / white[0]);
    const double y = compressed(xyz[1] / white[1]);
    const double z = compressed(xyz[2] / white[2]);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

/// Colors outside of sRGB are dimmed until they are inside.
Triple rgbFromLab(const Triple& lab)
{
    const auto expanded = [](double root)
    {
        const double cube = root * root * root;
        return cube > 0.008856 ? cube : (root - 16.0 / 116.0) / 7.787;
    };
    const double level = (lab[0] + 16.0) / 116.0;
    const double x = expanded(level + lab[1] / 500.0) * white[0];
    const double y = expanded(level) * white[1];
    const double z = expanded(level - lab[2] / 200.0) * white[2];
    Triple rgb(shownFromLinear(3.2406 * x - 1.5372 * y - 0.4986 * z),
               shownFromLinear(-0.9689 * x + 1.8758 * y + 0.0415 * z),
               shownFromLinear(0.0557 * x - 0.2040 * y + 1.0570 * z));
    const double brightest = std::ranges::max(rgb);
    if (brightest > 1.0)
        rgb /= brightest;
    for (double& component : rgb)
        component = std::max(component, 0.0);
    return rgb;
}

/// The polar form of CIELAB: magnitude, saturation and hue.
struct Msh
{
    double magnitude;
    double saturation;
    double hue;

    bool isSaturated() const { return saturation > 0.05; }
};

Msh mshFromLab(const Triple& lab)
{
    const double magnitude = norm(lab);
    return {magnitude, magnitude > 0.001 ? std::acos(lab[0] / magnitude) : 0.0,
            magnitude > 0.001 ? std::atan2(lab[2], lab[1]) : 0.0};
}

Triple labFromMsh(const Msh& msh)
{
    const double chroma = msh.magnitude * std::sin(msh.saturation);
    return {msh.magnitude * std::cos(msh.saturation), chroma * std::cos(msh.hue),
            chroma * std::sin(msh.hue)};
}

double angleBetween(double a, double b)
{
    const double difference = std::abs(a - b);
    return difference > pi ? std::abs(difference - 2.0 * pi) : difference;
}

/// The hue to use for an unsaturated color of a magnitude, so that the transition from a saturated
/// color looks even.
double adjustedHue(const Msh& saturated, double magnitude)
{
    if (saturated.magnitude >= magnitude - 0.1)
        return saturated.hue;
    const double spin =
        saturated.saturation *
        std::sqrt(magnitude * magnitude - saturated.magnitude * saturated.magnitude) /
        (saturated.magnitude * std::sin(saturated.saturation));
    return saturated.hue > -0.3 * pi ? saturated.hue + spin : saturated.hue - spin;
}

Triple interpolateDiverging(const Triple& lower, const Triple& upper, double weight)
{
    Msh a = mshFromLab(labFromRgb(lower));
    Msh b = mshFromLab(labFromRgb(upper));
    if (a.isSaturated() && b.isSaturated() && angleBetween(a.hue, b.hue) > 0.33 * pi)
    {
        const double middle = std::max({a.magnitude, b.magnitude, 88.0});
        if (weight < 0.5)
        {
            b = {middle, 0.0, 0.0};
            weight = 2.0 * weight;
        }
        else
        {
            a = {middle, 0.0, 0.0};
            weight = 2.0 * weight - 1.0;
        }
    }
    if (!a.isSaturated() && b.isSaturated())
        a.hue = adjustedHue(b, a.magnitude);
    else if (a.isSaturated() && !b.isSaturated())
        b.hue = adjustedHue(a, b.magnitude);
    const auto between = [&](double from, double to)
    { return (1.0 - weight) * from + weight * to; };
    return rgbFromLab(labFromMsh({between(a.magnitude, b.magnitude),
                                  between(a.saturation, b.saturation), between(a.hue, b.hue)}));
}

Triple hsvFromRgb(const Triple& rgb)
{
    const auto [lowest, highest] = std::ranges::minmax(rgb);
    const double chroma = highest - lowest;
    if (chroma == 0.0)
        return {0.0, 0.0, highest};
    double sextant = 0.0;
    if (highest == rgb[0])
        sextant = (rgb[1] - rgb[2]) / chroma;
    else if (highest == rgb[1])
        sextant = 2.0 + (rgb[2] - rgb[0]) / chroma;
    else
        sextant = 4.0 + (rgb[0] - rgb[1]) / chroma;
    return {(sextant < 0.0 ? sextant + 6.0 : sextant) / 6.0, chroma / highest, highest};
}

Triple rgbFromHsv(const Triple& hsv)
{
    const auto component = [&](double offset)
    {
        const double sextant = std::fmod(offset + 6.0 * hsv[0], 6.0);
        const double share = std::clamp(std::min(sextant, 4.0 - sextant), 0.0, 1.0);
        return hsv[2] * (1.0 - hsv[1] * share);
    };
    return {component(5.0), component(3.0), component(1.0)};
}

}

Color interpolate(const Color& lower, const Color& upper, double weight, ColorSpace space)
{
    const Triple a(lower.red, lower.green, lower.blue);
    const Triple b(upper.red, upper.green, upper.blue);
    const auto rgb = [&]
    {
        switch (space)
        {
        case ColorSpace::Hsv:
            return rgbFromHsv(mixed(hsvFromRgb(a), hsvFromRgb(b), weight));
        case ColorSpace::Lab:
            return rgbFromLab(mixed(labFromRgb(a), labFromRgb(b), weight));
        case ColorSpace::Diverging:
            return interpolateDiverging(a, b, weight);
        case ColorSpace::Step:
            return b;
        case ColorSpace::Rgb:
            break;
        }
        return mixed(a, b, weight);
    }();
    const double alpha = (1.0 - weight) * static_cast<double>(lower.alpha) +
                         weight * static_cast<double>(upper.alpha);
    return {static_cast<float>(rgb[0]), static_cast<float>(rgb[1]), static_cast<float>(rgb[2]),
            static_cast<float>(alpha)};
}

}
