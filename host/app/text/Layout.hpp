#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::app
{

/// The width of plain text.
inline constexpr std::size_t pageWidth = 100;

/// The texts with a separator between them.
std::string joined(std::span<const std::string> texts, std::string_view separator);

/// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string& text);

/// Replaces control characters by blanks, so that a text stays in one line.
std::string oneLine(std::string text);

/// What happens to long texts in the last column of a table.
enum class LastColumn
{
    Wrapped,
    AsItIs
};

/// Rows of cells as lines of aligned columns, two blanks apart, without control characters.
std::string alignedColumns(std::vector<std::vector<std::string>> rows, std::size_t indent = 0,
                           LastColumn lastColumn = LastColumn::Wrapped);

/// A text broken between words into lines of at most `pageWidth` characters, all but the first
/// indented. Without a line end.
std::string wrapped(std::string_view text, std::size_t indent);

/// A word as it is written in a shell: in quotes where it needs them.
std::string shellWord(const std::string& word);

}
