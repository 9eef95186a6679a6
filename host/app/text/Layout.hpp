#pragma once

#include <tavrin/pipeline/Words.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace tavrin::app
{

using pipeline::joined;
using pipeline::linesOf;
using pipeline::shellWord;

/// The number of characters in a line of wrapped text.
inline constexpr std::size_t pageWidth = 100;

/// Whether long texts in the last column of a table are wrapped.
enum class LastColumn
{
    Wrapped,
    Unwrapped
};

/// Prints rows of cells as lines with aligned columns that are two blanks apart. Control characters
/// become blanks.
std::string alignedColumns(std::vector<std::vector<std::string>> rows, std::size_t indent = 0,
                           LastColumn lastColumn = LastColumn::Wrapped);

/// Breaks a text between words into lines of at most `pageWidth` characters, a longer word being
/// left whole. All lines but the first are indented; the last has no line end.
std::string wrapped(std::string_view text, std::size_t indent);

}
