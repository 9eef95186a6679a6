#pragma once

#include <vtkDataSet.h>

#include <ostream>

namespace tavrin::io
{

/// Writes a data set as a VTK XML file with its arrays appended raw, uncompressed.
///
/// VTK's writers stop early when the stream fails, and their own reports are not reliable: the
/// caller checks the stream. Returns whether VTK has found no fault of its own.
bool writeVtkFile(vtkDataSet& dataSet, std::ostream& stream);

}
