#pragma once

#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/colormap/ColorMapFile.hpp>

#include <memory>

namespace tavrin
{

/// A color map as users name it: NAME_OR_FILE[@LOW:HIGH]. NAME is that of a built-in map; a file has
/// the extension ".json". FILE#NAME selects one of several maps in a file.
struct TAVRIN_API ColorMapReference
{
    /// The name of a built-in map or of a map in the file; empty for the only map in the file.
    std::string name;
    /// Empty for a built-in map.
    std::filesystem::path file;
    std::optional<ValueRange> range;

    /// Throws `usage_error` for an unknown name, with the most similar one if there is any, and for an
    /// invalid range. Does not access files.
    static ColorMapReference parse(const std::string& text);

    /// The map over its own range. Throws `ColorMapFileError`, and `usage_error` if the file has no map
    /// of that name, or several and none is named.
    ColorMap load() const;

    /// The map for an option: stretched over the range of values, so that the scaled and the direct
    /// lookup agree. A range that consists of one value is widened to have it in the middle; one that
    /// is not finite is replaced by 0 to 1.
    std::shared_ptr<const ColorMapDataObject> loadFor(const ValueRange& values) const;
};

}
