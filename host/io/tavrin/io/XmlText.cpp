#include <tavrin/io/XmlText.hpp>

#include <algorithm>
#include <array>

namespace tavrin::io
{

namespace
{

/// The number of bytes of the character of UTF-8 at the beginning of the text; 0 where the bytes are
/// not a character, are longer than necessary, or are one that XML forbids.
std::size_t lengthOfCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length > text.size())
        return 0;
    // Each further byte carries six bits; the first one carries what its length leaves.
    unsigned code = length < 2 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((byte(i) & 0xC0U) != 0x80)
            return 0;
        code = code << 6 | (byte(i) & 0x3FU);
    }
    constexpr std::array<unsigned, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isForbidden = code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
    return code < smallest[length] || isSurrogate || isForbidden ? 0 : length;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t length = lengthOfCharacter(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

}

std::string toUtf8(std::string_view text)
{
    if (isUtf8(text))
        return std::string(text);
    std::string converted;
    for (const char character : text)
    {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80)
        {
            converted += character;
            continue;
        }
        converted += static_cast<char>(0xC0U | code >> 6U);
        converted += static_cast<char>(0x80U | (code & 0x3FU));
    }
    return converted;
}

std::string toXmlText(std::string_view text)
{
    std::string result = toUtf8(text);
    std::ranges::replace_if(
        result, [](char character) { return static_cast<unsigned char>(character) < ' '; }, ' ');
    return result;
}

std::string escapeXml(std::string_view text)
{
    std::string escaped;
    for (const char character : toXmlText(text))
    {
        switch (character)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

}
