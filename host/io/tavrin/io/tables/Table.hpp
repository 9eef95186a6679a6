#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/io/InputFile.hpp>

#include <string>
#include <vector>

namespace tavrin::io
{

/// A table of numbers.
struct Table
{
    /// The names in the header.
    std::vector<std::string> columns;
    std::size_t rows = 0;
    /// Row after row. NaN where a field is empty.
    LargeVector<double> numbers;

    const double* row(std::size_t index) const { return numbers.data() + index * columns.size(); }
};

/// Reads a text with one row per line, whose fields are separated by commas, semicolons or tabs. The
/// first row holds the names of the columns; where it holds numbers, the comment before it does.
/// Fields may stand in double quotes, in which two quotes stand for one. Empty lines, comments, which
/// begin with `#`, and a byte order mark are skipped.
///
/// Numbers are parsed by all threads. Throws `Malformed`, naming line and column of what is not a
/// number, and `Aborted`.
Table readTable(InputFile file, const volatile bool& abortFlag);

}
