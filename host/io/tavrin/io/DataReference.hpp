#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// What the values of an array in a file belong to.
enum class Association
{
    Points,
    Cells
};

/// "points", "cells".
TAVRIN_API std::string_view nameOf(Association association);

/// Data in a file: `FILE#ARRAY?key=value&key=value`.
struct TAVRIN_API DataReference
{
    std::filesystem::path file;
    /// Left out where the file has one array.
    std::optional<std::string> array;
    /// `on=points` or `on=cells`: needed where both have an array of that name.
    std::optional<Association> on;
    /// `shape=scalar`, `shape=3`, `shape=2x2`: read the components of an array as this shape; no
    /// extents for a scalar.
    std::optional<std::vector<std::size_t>> shape;
    /// `dimension=1`, `2` or `3`: the number of coordinates of the grid's points.
    std::optional<std::size_t> dimension;
    /// `time=T`: this step alone.
    std::optional<double> time;

    /// FILE is the longest beginning of the text, up to a `#`, a `?` or its end, that names an
    /// existing file, and otherwise ends at the first `#` or `?`. Throws `usage_error` for an
    /// unknown key or a value that it does not take, naming what there is.
    static DataReference parse(const std::string& text);
};

}
