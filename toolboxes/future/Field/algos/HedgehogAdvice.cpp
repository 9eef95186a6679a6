#include "HedgehogAdvice.hpp"

#include <tavrin/value/LexicalCast.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace
{

/// Arrows are in proportion if the ratio of their length to the distance of neighboring samples, or its
/// inverse, is at most this.
constexpr double disproportion = 20.0;

/// The direction of a line is preserved if its length is at least this number of steps of single
/// precision.
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

std::string share(std::size_t count, std::size_t total)
{
    return std::to_string(count) + " of " + std::to_string(total) + ' ';
}

}

ScaleAdvice adviseOnScale(double arrowLength, double scale, double neighborDistance)
{
    const double better = scale * (neighborDistance / arrowLength);
    if (neighborDistance == 0.0 || !std::isfinite(better))
        return {};
    ScaleAdvice advice{.suggestion = rounded(better), .hint = {}};
    if (arrowLength * disproportion < neighborDistance ||
        arrowLength > neighborDistance * disproportion)
        advice.hint = "the longest arrows have a length of " + rounded(arrowLength) +
                      ", and neighboring samples are " + rounded(neighborDistance) +
                      " apart; with \"Scale\" " + advice.suggestion + " both are equal";
    return advice;
}

std::string hintOnPrecision(double lineLength, double farthestPosition)
{
    const double step = farthestPosition * std::numeric_limits<float>::epsilon();
    if (lineLength == 0.0 || lineLength >= fewestSteps * step)
        return {};
    return "the longest lines have a length of " + rounded(lineLength) +
           ", and their ends are rounded to multiples of about " + rounded(step) +
           " here; the other representations are exact";
}

std::string hintOnOutlier(double extent, double reach, const tavrin::Tensor<double, 3>& position)
{
    if (!(extent > 0.0) || !(reach > disproportion * extent))
        return {};
    return "nearly all arrows lie within " + rounded(extent) + " of one another, but the one at (" +
           rounded(position[0]) + ", " + rounded(position[1]) + ", " + rounded(position[2]) +
           ") reaches " + rounded(reach) + " beyond them; a picture of all shows most of them tiny";
}

std::string hintOnTime(double time, double firstTime, double lastTime)
{
    const std::string first = tavrin::toText(firstTime);
    return "the field has values from time " + first + " to " + tavrin::toText(lastTime) +
           ", none at " + tavrin::toText(time) + "; those at " + first + " are shown";
}

std::string hintOnInvalid(std::size_t numInvalid, std::size_t numValues)
{
    if (numInvalid == 0)
        return {};
    return share(numInvalid, numValues) + "values are marked as outside and left out";
}

std::string hintOnNotFinite(std::size_t numNotFinite, std::size_t numArrows)
{
    if (numNotFinite == 0)
        return {};
    return share(numNotFinite, numArrows) +
           "arrows have a position or a vector that is not finite, and are not drawn";
}
