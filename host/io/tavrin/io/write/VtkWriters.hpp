#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/io/write/StepWriter.hpp>

#include <memory>

namespace tavrin::io
{

/// The writers of VTK XML files for each kind of grid. The domain must be of that kind and outlive
/// the writer. They throw `Aborted`, and `runtime_error` for an index that is too large for VTK.
std::unique_ptr<StepWriter> makeImageWriter(const Domain& domain, const volatile bool& abortFlag);
std::unique_ptr<StepWriter> makeRectilinearWriter(const Domain& domain,
                                                  const volatile bool& abortFlag);
std::unique_ptr<StepWriter> makeStructuredWriter(const Domain& domain,
                                                 const volatile bool& abortFlag);
std::unique_ptr<StepWriter> makeUnstructuredWriter(const Domain& domain,
                                                   const volatile bool& abortFlag);
std::unique_ptr<StepWriter> makePolyDataWriter(const Domain& domain,
                                               const volatile bool& abortFlag);

/// Whether the cells are vertices, then lines, then triangles and quadrilaterals: polygonal data
/// keeps its cells in this order.
bool areInOrderOfPolyData(const CellComplex& cells);

}
