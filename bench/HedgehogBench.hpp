#pragma once

namespace tavrin::bench
{

/// Lines for one million 3-vectors on a uniform grid: the whole algorithm up to the finished drawable, on 1
/// and 2 threads, compared with `vtkHedgeHog`, which uses one thread.
void addHedgehogRows();

}
