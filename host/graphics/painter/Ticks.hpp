#pragma once

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

    /// Multiples of 1, 2 or 5 times a power of ten between two limits in any order. There are at
    /// least two, and otherwise at most `mostSteps` steps. Equal limits have one tick, limits that
    /// are not finite none.
    static Ticks between(double low, double high, unsigned mostSteps);
};

}
