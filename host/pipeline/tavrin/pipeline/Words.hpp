#pragma once

#include <tavrin/base/Export.hpp>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::pipeline
{

/// Joins the texts with a separator between them.
TAVRIN_API std::string joined(std::span<const std::string> texts, std::string_view separator);

/// Splits a text into lines, without their line ends.
TAVRIN_API std::vector<std::string> linesOf(const std::string& text);

/// A number as the shortest text that reads back as the same number.
TAVRIN_API std::string shortestText(double number);

/// Writes a word for a shell, in quotes if it needs them.
TAVRIN_API std::string shellWord(const std::string& word);

}
