#include "HedgehogAdvice.hpp"

#include <tavrin/value/LexicalCast.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace
{

/// An arrow should be neither so many times longer nor shorter than its neighbors are away.
constexpr double disproportion = 20.0;

/// A line should be at least so many steps of single precision long.
constexpr double fewestSteps = 32.0;

/// A number with two significant digits, in its shortest form.
std::string rounded(double number)
{
    std::array<char, 32> digits{};
    const auto written =
        std::to_chars(digits.begin(), digits.end(), number, std::chars_format::scientific, 1);
    std::from_chars(digits.begin(), written.ptr, number);
    return tavrin::toText(number);
}

}

std::string adviceOnScale(double longestArrow, double scale, double neighborDistance)
{
    const double better = scale * (neighborDistance / longestArrow);
    const bool isFitting = longestArrow * disproportion >= neighborDistance &&
                           longestArrow <= neighborDistance * disproportion;
    if (isFitting || neighborDistance == 0.0 || !std::isfinite(better))
        return {};
    return "hint: the longest arrow has the length " + rounded(longestArrow) +
           ", and neighboring samples are " + rounded(neighborDistance) +
           " apart; with \"Scale\" " + rounded(better) + " both are equal\n";
}

std::string adviceOnPrecision(double longestArrow, double farthestPosition)
{
    const double step = farthestPosition * std::numeric_limits<float>::epsilon();
    if (longestArrow == 0.0 || longestArrow >= fewestSteps * step)
        return {};
    return "hint: the longest line has the length " + rounded(longestArrow) +
           ", and its ends are rounded to multiples of about " + rounded(step) +
           " here; the other representations are exact\n";
}

std::string adviceOnTime(double time, double firstTime, double lastTime)
{
    const std::string first = tavrin::toText(firstTime);
    return "hint: the field has values from time " + first + " to " + tavrin::toText(lastTime) +
           ", none at " + tavrin::toText(time) + "; shown are those at " + first + '\n';
}
