#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Formats.hpp>

namespace tavrin::io
{

/// Opens a legacy VTK file. Throws `Malformed` and `Aborted`.
std::unique_ptr<DataFile> openLegacyFile(const FileFormat& format,
                                         const std::filesystem::path& file,
                                         const volatile bool& abortFlag);

}
