#pragma once

#include <tavrin/base/Export.hpp>

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// The elements that the values of an array belong to.
enum class Association
{
    Points,
    Cells
};

/// "points", "cells".
TAVRIN_API std::string_view nameOf(Association association);

/// A key of a reference to data.
struct ReferenceKey
{
    std::string name;
    /// The values to choose from; empty where there is no such list.
    std::vector<std::string> values;
};

TAVRIN_API const std::vector<ReferenceKey>& referenceKeys();

/// A reference to data in a file: `FILE#ARRAY?key=value&key=value`.
struct TAVRIN_API DataReference
{
    std::filesystem::path file;
    /// The name of the array, in UTF-8. May be left out if the file has one array.
    std::optional<std::string> array;
    /// `on=points` or `on=cells`; needed if both have an array of that name.
    std::optional<Association> on;
    /// `shape=scalar`, `shape=3`, `shape=2x2`: the shape that the components of the array are read as.
    /// A scalar has no extents.
    std::optional<std::vector<std::size_t>> shape;
    /// `component=x` or `component=0`: only one component of the array, by its name or its number.
    std::optional<std::string> component;
    /// `order=voigt` or `order=xx,xy,...`: the names of the six components of a symmetric 3x3 matrix
    /// in the order of the file.
    std::optional<std::array<std::string, 6>> order;
    /// `dimension=1`, `2` or `3`: the number of coordinates of the grid's points.
    std::optional<std::size_t> dimension;
    /// `time=T`: only the step at this time.
    std::optional<double> time;
    /// `block=NAME` or `block=0`: one block of a multi-block file, by its name or its number.
    std::optional<std::string> block;
    /// `reach=R`: positions beside a surface or line get its nearest value up to this distance, in the
    /// unit of the coordinates.
    std::optional<double> reach;

    /// Whether a key or the name chooses an array or what is read of it.
    bool refersToArray() const { return array || on || shape || component || order; }

    /// FILE is the longest prefix of the text that ends at a `#`, a `?` or the end of the text and
    /// names an existing file. If there is none, FILE ends at the first `#` or `?`. Throws
    /// `usage_error` for an unknown or repeated key and for an invalid value, naming the valid
    /// ones.
    static DataReference parse(const std::string& text);
};

}
