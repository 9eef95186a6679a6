#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Formats.hpp>

namespace tavrin::io
{

/// Opens a legacy VTK file. Throws `Malformed` and `Aborted`.
std::unique_ptr<DataFile> openLegacyFile(const FileFormat& format, InputFile file,
                                         const volatile bool& abortFlag);

}
