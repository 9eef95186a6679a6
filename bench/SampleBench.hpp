#pragma once

namespace tavrin::bench
{

/// Sampling several kinds of grid at a million points, beside `vtkProbeFilter`. The search
/// structures of both sides are made before; see LocatorBench for that.
void addSampleRows();

}
