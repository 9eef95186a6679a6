#pragma once

namespace tavrin::bench
{

/// Sets the number of threads of VTK's filters.
void setVtkThreads(int threads);

}
