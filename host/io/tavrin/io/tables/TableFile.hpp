#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Formats.hpp>

namespace tavrin::io
{

/// Opens a table of numbers as points with values. Rows of equal time are a step, in ascending order
/// of time. Throws `Malformed` and `Aborted`.
std::unique_ptr<DataFile> openTable(const FileFormat& format, InputFile file,
                                    const volatile bool& abortFlag);

}
