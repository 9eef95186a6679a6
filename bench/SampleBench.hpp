#pragma once

namespace tavrin::bench
{

/// Sampling several kinds of grid at a million points, compared with `vtkProbeFilter`. Search structures are
/// built before; see LocatorBench for that.
void addSampleRows();

}
