#pragma once

#include <tavrin/io/DataFile.hpp>

namespace tavrin::io
{

/// The name of the array, on points or cells, that tells which values of the other arrays are valid:
/// it is not 0 for them. Other programs use it too. It becomes the validity of functions, and is
/// read as a function of its own only if a reference names it.
inline constexpr std::string_view validityMaskName = "vtkValidPointMask";

/// The mask for the values of an array; null where the file has none, and for the mask itself.
const DataFile::Array* findValidityMask(const std::vector<DataFile::Array>& arrays,
                                        const DataFile::Array& array);

/// Whether one of the arrays fits a reference.
bool hasArray(const std::vector<DataFile::Array>& arrays, const DataReference& reference);

/// The array of a file that a reference means. Throws `usage_error`, naming the arrays, where none or
/// several fit.
const DataFile::Array& chooseArray(const std::vector<DataFile::Array>& arrays,
                                   const DataReference& reference);

}
