#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/value/Tensor.hpp>

#include <cstdint>
#include <span>
#include <vector>

namespace tavrin
{

/// An order for looking up positions one after the other, in which neighbors follow each other: so
/// each finds in the cache what the one before it has read there. Entry i is the index of the
/// position that comes i-th; positions that are not finite come first. Empty where the positions
/// follow each other closely as they are, and where there are too many to number in 32 bits.
///
/// The order is that of a Morton curve through the box of all positions, in about a thousand steps
/// along each axis. It takes about 20 ns a position, which pays where the lookups miss the cache.
template<std::size_t D>
TAVRIN_API std::vector<std::uint32_t> spatialOrder(std::span<const Tensor<double, D>> positions);

}
