#pragma once

#include <array>
#include <cstddef>

namespace tavrin
{

/// How much further than its first vertex each vertex of a structured cell is, in the order of the
/// linear cell types; of a quad the first four, of a line the first two. Takes the step to the next
/// point along each axis of the cell.
constexpr std::array<std::size_t, 8> structuredCorners(const std::array<std::size_t, 3>& steps)
{
    const auto& [i, j, k] = steps;
    return {0, i, i + j, j, k, i + k, i + j + k, j + k};
}

}
