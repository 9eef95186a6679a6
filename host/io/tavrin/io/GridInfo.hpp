#pragma once

#include <tavrin/io/Loader.hpp>

namespace tavrin::io
{

/// Sets the members of `info` that describe the grid: kind, dimension, numbers of elements, size, cell
/// types and bounds.
void describeGrid(const Domain& domain, FileInfo& info);

}
