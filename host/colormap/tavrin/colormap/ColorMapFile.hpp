#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/colormap/ColorMap.hpp>

#include <filesystem>

namespace tavrin
{

/// A color-map file that cannot be read or used: "FILE: cause".
class TAVRIN_API ColorMapFileError : public runtime_error
{
public:
    ColorMapFileError(const std::filesystem::path& file, const std::string& cause)
        : runtime_error(file.string() + ": " + cause)
    {
    }
};

/// Reads the color maps of a JSON file as desktop tools export them: one object, or an array of
/// them, with "RGBPoints" [x, r, g, b, ...] and, optional, "Name" (else the name of the file),
/// "ColorSpace" ("RGB" where it is left out, "HSV", "Lab", "CIELAB", "Diverging", "Step"),
/// "NanColor" [r, g, b], and "BelowRangeColor" and "AboveRangeColor", each where its "Use..." is
/// set. Opacities ("Points") and display settings are passed over.
/// Throws `ColorMapFileError` that says what is wrong and where.
TAVRIN_API std::vector<ColorMap> readColorMapFile(const std::filesystem::path& file);

}
