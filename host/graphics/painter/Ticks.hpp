#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavrin::graphics::painter
{

/// Round values along an axis and their labels.
struct Ticks
{
    std::vector<double> values;
    std::vector<std::string> labels;
    /// Offset and power of ten that the labels leave out and the title shows: " - 10000000",
    /// " (x10^3)", or both, in typographic characters. Empty if the labels are the values.
    std::string titleSuffix;
    /// The labels are the values, minus the offset, divided by this power of ten.
    int exponent = 0;
    int decimals = 0;

    /// What several axes have in common.
    struct Format
    {
        /// Without one, it is chosen for the limits.
        std::optional<int> exponent = std::nullopt;
        int leastDecimals = 0;
    };

    /// Multiples of 1, 2 or 5 times a power of ten between two limits in any order. There are at
    /// least two, and otherwise at most `mostSteps` steps. Equal limits have one tick, limits that
    /// are not finite none.
    static Ticks between(double low, double high, unsigned mostSteps, const Format& format);
    static Ticks between(double low, double high, unsigned mostSteps)
    {
        return between(low, high, mostSteps, Format{});
    }
};

}
