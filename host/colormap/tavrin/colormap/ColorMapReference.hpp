#pragma once

#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/colormap/ColorMapFile.hpp>

#include <memory>

namespace tavrin
{

/// How people name a color map: NAME_OR_FILE[@LOW:HIGH]. The name is that of a built-in map; a
/// file is told from it by its extension ".json". A file of several maps takes FILE#NAME.
struct TAVRIN_API ColorMapReference
{
    /// Of a built-in map, or of the map in the file; empty for the only one in a file.
    std::string name;
    /// Empty for a built-in map.
    std::filesystem::path file;
    std::optional<ValueRange> range;

    /// Throws `usage_error` for an unknown name, with the nearest one where one is near, and for a
    /// range that is none. Looks at no file.
    static ColorMapReference parse(const std::string& text);

    /// The map as it is, over its own range. Throws `ColorMapFileError`, and `usage_error` for a
    /// name that the file does not have or a missing one.
    ColorMap load() const;

    /// The map as an option takes it: stretched over the values (`range`, or those of a field), so
    /// that the scaled and the direct lookup agree. A range of one value gets that value in its
    /// middle; one that is not finite is taken as 0 to 1.
    std::shared_ptr<const ColorMapDataObject> loadFor(const ValueRange& values) const;
};

}
