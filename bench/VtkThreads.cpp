#include "VtkThreads.hpp"

#include <vtkSMPTools.h>

void tavrin::bench::setVtkThreads(int threads)
{
    vtkSMPTools::Initialize(threads);
}
