#pragma once

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>

namespace tavrin::pipeline
{

/// Whether an option is for a color map.
TAVRIN_API bool takesColorMap(const InputBase& input);

/// A color map as the command line names it: NAME_OR_FILE[@LOW:HIGH]. Without a range it spans the
/// norms of all values of the first function among `inputs`, or 0 to 1 where there is none. Throws
/// `usage_error`, `ColorMapFileError`, and what reading a series throws.
TAVRIN_API std::shared_ptr<const ColorMapDataObject> loadColorMap(
    const std::string& reference, const DataObjectBundle::Members& inputs);

}
