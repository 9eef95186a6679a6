#pragma once

#include <tavrin/io/FileAccess.hpp>

namespace tavrin::io
{

/// What the file holds, as `Loader::inspect` tells it.
FileInfo inspectFile(FileAccess& access, const DataReference& reference);

}
