#include "Ticks.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace tavrin::graphics::painter
{

namespace
{

constexpr std::string_view minus = "\u2212";

std::string withTypographicMinus(std::string text)
{
    for (auto at = text.find('-'); at != std::string::npos; at = text.find('-', at))
        text.replace(at, 1, minus);
    return text;
}

std::string superscript(int number)
{
    constexpr std::array<std::string_view, 10> digits{"\u2070", "\u00b9", "\u00b2", "\u00b3",
                                                      "\u2074", "\u2075", "\u2076", "\u2077",
                                                      "\u2078", "\u2079"};
    std::string text;
    for (const char character : std::to_string(number))
        text += character == '-' ? "\u207b" : digits[static_cast<std::size_t>(character - '0')];
    return text;
}

/// The smallest of 1, 2 and 5 times a power of ten that is at least the number.
double roundedUp(double number)
{
    const double power = std::pow(10.0, std::floor(std::log10(number)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (number <= factor * power * (1.0 + 1e-9))
            return factor * power;
    return 10.0 * power;
}

int exponentOf(double number)
{
    return static_cast<int>(std::floor(std::log10(number) + 1e-9));
}

/// The offset to subtract from all values if they differ only in their last digits; otherwise 0.
double commonOffset(double low, double high, double step)
{
    const double largest = std::max(std::abs(low), std::abs(high));
    if (largest / step < 1e5)
        return 0.0;
    const double unit = std::pow(10.0, std::ceil(std::log10(high - low)));
    return std::floor(low / unit) * unit;
}

}

Ticks Ticks::between(double low, double high, unsigned mostSteps, const Format& format)
{
    Ticks ticks;
    if (low > high)
        std::swap(low, high);
    const double range = high - low;
    if (!std::isfinite(range) || mostSteps == 0)
        return ticks;
    const double magnitude = std::max(std::abs(low), std::abs(high));
    // Within a smaller range, the labels of neighboring ticks would be equal.
    if (!(range > 1e-13 * magnitude) || !(range > 1e-300))
    {
        ticks.values = {low};
        ticks.labels = {withTypographicMinus(fmt::format("{:.6g}", low))};
        return ticks;
    }

    double step = roundedUp(range / mostSteps);
    const auto first = [&] { return std::ceil(low / step - 1e-6); };
    const auto last = [&] { return std::floor(high / step + 1e-6); };
    // A scale needs two numbers.
    while (last() < first() + 1.0)
        step = roundedUp(0.4 * step);
    const double offset = commonOffset(low, high, step);
    const double largest = std::max(std::abs(low - offset), std::abs(high - offset));
    int& exponent = ticks.exponent;
    exponent = exponentOf(largest);
    if (exponent > -4 && exponent < 5)
        exponent = 0;
    exponent = format.exponent.value_or(exponent);
    const double unit = std::pow(10.0, exponent);
    const int decimals = std::max(format.leastDecimals, -exponentOf(step / unit));
    ticks.decimals = decimals;
    for (double i = first(); i <= last(); ++i)
    {
        // Labels show neither rounding errors nor a negative zero.
        const double value = i * step;
        const double shown = (value - offset) / unit;
        const double smallest = 0.5 * std::pow(10.0, -decimals);
        ticks.values.push_back(std::clamp(value, low, high));
        ticks.labels.push_back(withTypographicMinus(
            fmt::format("{:.{}f}", std::abs(shown) < smallest ? 0.0 : shown, decimals)));
    }
    if (offset != 0.0)
        ticks.titleSuffix +=
            fmt::format(" {} {:.15g}", offset > 0.0 ? minus : "+", std::abs(offset));
    if (exponent != 0)
        ticks.titleSuffix += " (\u00d710" + superscript(exponent) + ")";
    return ticks;
}

}
