#pragma once

namespace tavrin::bench
{

/// Lines for one million 3-vectors on a uniform grid: all that the algorithm does up to the finished
/// drawable, on 1 and 2 threads, against `vtkHedgeHog`, which uses one.
void addHedgehogRows();

}
