#pragma once

#include <tavrin/io/FileAccess.hpp>

namespace tavrin::io
{

/// Implements `Loader::inspect`.
FileInfo inspectFile(FileAccess& access, const DataReference& reference);

}
