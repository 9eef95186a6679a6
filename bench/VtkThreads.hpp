#pragma once

namespace tavrin::bench
{

/// How many threads the filters of VTK use from now on.
void setVtkThreads(int threads);

}
