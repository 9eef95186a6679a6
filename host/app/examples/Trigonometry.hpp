#pragma once

#include <cmath>
#include <numbers>

namespace tavrin::app::examples
{

namespace detail
{

/// The Taylor series of the sine (`first` = 2) or cosine (`first` = 1) without the leading power,
/// for |x| <= pi / 4.
inline double trigonometricSeries(double x, int first)
{
    double sum = 1.0;
    for (int k = first + 16; k >= first; k -= 2)
        sum = 1.0 - x * x / (k * (k + 1)) * sum;
    return sum;
}

}

/// The cosine of an angle given in turns: cosine(1) = cosine(0) exactly.
///
/// It uses additions, multiplications and divisions only, whose results have the same bits on every
/// machine, while the last bit of std::cos depends on the machine.
inline double cosine(double turns)
{
    const double quarter = std::round(turns * 4.0);
    const double angle = (turns - quarter / 4.0) * (2.0 * std::numbers::pi);
    const int quadrant = static_cast<int>(quarter - 4.0 * std::floor(quarter / 4.0));
    const double value = quadrant % 2 == 0 ? detail::trigonometricSeries(angle, 1)
                                           : -angle * detail::trigonometricSeries(angle, 2);
    return quadrant < 2 ? value : -value;
}

/// The sine of an angle given in turns.
inline double sine(double turns)
{
    return cosine(turns - 0.25);
}

}
