#include "Messages.hpp"

#include <algorithm>

namespace tavrin::app
{

namespace
{

constexpr std::size_t longestName = 200;
constexpr std::size_t longestMessage = 2000;
constexpr std::string_view ellipsis = "...";

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

/// At most `length` bytes from the start of the text, ending between characters.
std::string_view startOf(std::string_view text, std::size_t length)
{
    while (length > 0 && length < text.size() && isContinuation(text[length]))
        --length;
    return text.substr(0, length);
}

std::string_view endOf(std::string_view text, std::size_t length)
{
    text.remove_prefix(text.size() - std::min(length, text.size()));
    while (!text.empty() && isContinuation(text.front()))
        text.remove_prefix(1);
    return text;
}

/// Shortens every piece between separators.
std::string shortenedPieces(std::string_view text, char separator)
{
    std::string result;
    while (true)
    {
        const auto end = text.find(separator);
        result += shortened(text.substr(0, end));
        if (end == std::string_view::npos)
            return result;
        result += separator;
        text.remove_prefix(end + 1);
    }
}

}

std::string oneLine(std::string text)
{
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    std::ranges::replace_if(text, isControl, ' ');
    // The control characters U+0080 to U+009F are two bytes in UTF-8.
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '\xc2' && static_cast<unsigned char>(text[i + 1]) < 0xa0)
            text.replace(i, 2, " ");
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string shortened(std::string_view name)
{
    if (name.size() <= longestName)
        return std::string(name);
    constexpr std::size_t half = (longestName - ellipsis.size()) / 2;
    return std::string(startOf(name, half)).append(ellipsis).append(endOf(name, half));
}

std::string boundedMessage(const std::string& message)
{
    const std::string line = oneLine(message);
    std::string result;
    std::string_view rest = line;
    for (bool isQuoted = false; !rest.empty(); isQuoted = !isQuoted)
    {
        const std::size_t end = std::min(rest.find('"'), rest.size());
        const std::string_view piece = rest.substr(0, end);
        result += isQuoted ? shortened(piece) : shortenedPieces(piece, ' ');
        if (end < rest.size())
            result += '"';
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (result.size() > longestMessage)
        result = std::string(startOf(result, longestMessage)).append(ellipsis);
    return result;
}

}
