#pragma once

namespace tavrin::bench
{

/// The results of "Field/Info", on the one thread that it uses:
/// - the extremes of 16M 3-vectors, for float64 and float32 input, against "bandwidth": reading the
///   same bytes on one thread; tavrin's share of it is that time as a multiple of its own
/// - the median of 10M 3-vectors, in random order and in that of a smooth field, against
///   "nth_element": the same selections on copies of the components, which lie side by side.
void addInfoRows();

}
