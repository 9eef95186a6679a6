#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// The meaning of the columns of a table.
struct TableColumns
{
    /// Columns whose names tell that they are the components of one quantity.
    struct Array
    {
        std::string name;
        std::vector<std::size_t> columns;
        /// "x", "y", ...; empty texts where the columns are numbered.
        std::vector<std::string> componentNames;
    };

    /// The columns of the coordinates. At least that of x is there; others are 0 everywhere.
    std::array<std::optional<std::size_t>, 3> coordinates;
    std::optional<std::size_t> time;
    /// The column that is 0 where the values of a row are placeholders.
    std::optional<std::size_t> validity;
    std::vector<Array> arrays;
};

/// Finds the meaning of columns by their names:
/// - coordinates: `x`, `y`, `z`, `X (m)`, `Points:0`, `Points_0`, `coord_x`, ... in any case
/// - `time` and `valid`, if there are other values than these
/// - components of a vector: `velocity_x`, `velocity_y`, ... or `velocity:0`, `velocity_0`, ...
/// - components of a matrix: `stress_xx`, `stress_xy`, ...; six of these make it symmetric
///
/// Columns that make no whole vector or matrix are scalars. Throws `Malformed`, naming the columns,
/// where there are no coordinates.
TableColumns findColumns(const std::vector<std::string>& names);

/// The names of the columns for the components of values of a shape, in the order of the components.
std::vector<std::string> columnNamesFor(const std::string& array,
                                        const std::vector<std::size_t>& shape);

/// Whether a column of this name is taken as a coordinate wherever the table has no other.
bool isCoordinate(const std::string& name);

}
