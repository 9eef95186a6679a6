#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Shape.hpp>

namespace tavrin::io
{

/// An array of this name tells which values of the others are real. Other programs know it too. It is
/// meant only where it is named.
inline constexpr std::string_view validityMaskName = "vtkValidPointMask";

/// Whether there is an array that a reference may mean.
bool hasArray(const std::vector<DataFile::Array>& arrays, const DataReference& reference);

/// The array of a file that a reference means. Throws `usage_error`, naming what there is.
const DataFile::Array& chooseArray(const std::vector<DataFile::Array>& arrays,
                                   const DataReference& reference);

/// The shape that the array is read as. Throws `usage_error`, naming the shapes that fit.
Shape chooseShape(const DataFile::Array& array, const std::optional<Shape>& wanted);

}
