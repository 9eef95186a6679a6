#include "Layout.hpp"

#include "../console/Messages.hpp"

#include <algorithm>
#include <sstream>
#include <utility>

namespace tavrin::app
{

namespace
{

/// The number of characters of a text in UTF-8.
std::size_t numCharacters(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](unsigned char c) { return (c & 0xc0U) != 0x80U; }));
}

}

std::string alignedColumns(std::vector<std::vector<std::string>> rows, std::size_t indent,
                           LastColumn lastColumn)
{
    constexpr std::size_t gap = 2;
    std::vector<std::size_t> widths;
    for (auto& row : rows)
    {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            row[i] = oneLine(std::move(row[i]));
            widths[i] = std::max(widths[i], numCharacters(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows)
    {
        std::string line(indent, ' ');
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            if (i + 1 < row.size())
                line += row[i] + std::string(widths[i] - numCharacters(row[i]) + gap, ' ');
            else if (lastColumn == LastColumn::Wrapped)
                line += wrapped(row[i], numCharacters(line));
            else
                line += row[i];
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

std::string wrapped(std::string_view text, std::size_t indent)
{
    std::string lines;
    std::size_t column = indent;
    bool isLineEmpty = true;
    while (!text.empty())
    {
        const auto word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const std::size_t length = numCharacters(word);
        if (!isLineEmpty && column + 1 + length > pageWidth)
        {
            lines.append("\n").append(indent, ' ');
            column = indent;
            isLineEmpty = true;
        }
        if (!isLineEmpty)
        {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += length;
        isLineEmpty = false;
    }
    return lines;
}

}
