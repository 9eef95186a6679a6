#pragma once

#include <vtkDataSet.h>

#include <ostream>

namespace tavrin::io
{

/// Writes a data set as a VTK XML file with raw, uncompressed appended arrays.
///
/// Returns whether VTK reports success. Its reports of stream failures are not reliable, so the caller
/// must check the stream as well.
bool writeVtkFile(vtkDataSet& dataSet, std::ostream& stream);

}
