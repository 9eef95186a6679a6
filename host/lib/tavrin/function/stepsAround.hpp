#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace tavrin
{

/// The time steps between which a function with these ascending times is interpolated at a time: the
/// same step twice where they meet, and the first step twice for a time that the function does not
/// have.
inline std::pair<std::size_t, std::size_t> stepsAround(std::span<const double> times, double time)
{
    if (times.size() < 2 || !(time >= times.front() && time <= times.back()))
        return {0, 0};
    const auto above = std::ranges::upper_bound(times, time);
    const auto lower = static_cast<std::size_t>(above - times.begin()) - 1;
    return {lower, times[lower] == time ? lower : lower + 1};
}

}
