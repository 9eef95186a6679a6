#pragma once

#include <tavrin/io/Loader.hpp>

namespace tavrin::io
{

/// Fills in what the grid says: kind, dimension, numbers of elements, size, cell types and bounds.
void describeGrid(const Domain& domain, FileInfo& info);

}
