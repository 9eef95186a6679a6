#pragma once

namespace tavrin::bench
{

/// Norm, scale, clip and mask of 16M 3-vectors, the allocation of the result included, for float64
/// and float32 input on 1 and 2 threads, against
/// - "bandwidth": reading and writing the same number of bytes in memory that is already there;
///   tavrin's share of the bandwidth is that time as a multiple of its own
/// - `vtkArrayCalculator` on the same array.
void addOperatorRows();

}
