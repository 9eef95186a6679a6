#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Formats.hpp>

namespace tavrin::io
{

/// Opens a VTK XML file of the format, which must hold the data set that the format names. Throws
/// `Malformed` and `Aborted`.
std::unique_ptr<DataFile> openXmlFile(const FileFormat& format, InputFile file,
                                      const volatile bool& abortFlag);

}
