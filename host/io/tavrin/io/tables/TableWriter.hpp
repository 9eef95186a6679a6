#pragma once

#include <tavrin/io/write/FunctionWriter.hpp>

namespace tavrin::io
{

/// Makes the writer of a table with one row per value: the time if the function has times, the
/// coordinates of the point or of the center of the cell, the components, and if there is a mask a
/// column `valid` with 1 or 0. Numbers have the fewest digits that read back as the same number. Names
/// are quoted where the separator, a quote or a blank at their ends requires it.
///
/// All functions that are appended must have the same type of values, coordinates and name, and all or
/// none have times. Throws `FileError` where the file cannot be created or replaced.
std::unique_ptr<FunctionWriter> startTable(const std::filesystem::path& file,
                                           const volatile bool& abortFlag);

}
