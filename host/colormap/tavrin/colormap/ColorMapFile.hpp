#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/colormap/ColorMap.hpp>

#include <filesystem>

namespace tavrin
{

/// A color map file that cannot be read or used: "FILE: CAUSE".
class TAVRIN_API ColorMapFileError : public runtime_error
{
public:
    ColorMapFileError(const std::filesystem::path& file, const std::string& cause)
        : runtime_error(file.string() + ": " + cause)
    {
    }
};

/// Reads the color maps of a JSON file as desktop tools export them: an object or an array of
/// objects with "RGBPoints" [x, r, g, b, ...] and optionally "Name" (by default the name of the
/// file), "ColorSpace" ("RGB" by default, "HSV", "Lab", "CIELAB", "Diverging" or "Step"), "NanColor"
/// [r, g, b], and "BelowRangeColor" and "AboveRangeColor", which count if "UseBelowRangeColor" and
/// "UseAboveRangeColor" are set. Opacities ("Points") and display settings are ignored.
/// Throws `ColorMapFileError`.
TAVRIN_API std::vector<ColorMap> readColorMapFile(const std::filesystem::path& file);

}
