#pragma once

#include <string>
#include <vector>

namespace tavrin::graphics::painter
{

/// Round values of an axis and what is written there.
struct Ticks
{
    std::vector<double> values;
    std::vector<std::string> labels;
    /// What the title has to add so that the labels are right: " - 10000000", " (x10^3)", or both,
    /// in typographic characters. Empty where the labels are the values themselves.
    std::string titleSuffix;

    /// Multiples of 1, 2 or 5 times a power of ten between the limits, which may be in any order:
    /// two at least, and no more steps between them than wanted unless it takes more for that.
    /// Equal limits have one. None where a limit is not finite.
    static Ticks between(double low, double high, unsigned mostSteps);
};

}
