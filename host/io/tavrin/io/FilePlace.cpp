#include <tavrin/io/FilePlace.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace
{

/// Whether the byte continues a character of UTF-8 that began before.
bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

/// The text, or its ends where it is longer than `maximum` bytes. Characters of UTF-8 stay whole.
std::string withoutMiddle(const std::string& text, std::size_t maximum)
{
    if (text.size() <= maximum)
        return text;
    std::size_t head = maximum * 2 / 3;
    std::size_t tail = text.size() - maximum / 3;
    while (head > 0 && isContinuation(text[head]))
        --head;
    while (tail < text.size() && isContinuation(text[tail]))
        ++tail;
    return text.substr(0, head) + "..." + text.substr(tail);
}

}

std::string cleanLine(const std::string& text)
{
    constexpr std::size_t longestName = 120;
    constexpr std::size_t longestText = 800;
    std::string line = text;
    std::ranges::replace_if(
        line, [](char character) { return character >= 0 && character < ' '; }, ' ');
    std::string shortened;
    for (std::size_t first = 0; first < line.size();)
    {
        // Texts in quotes, and texts between them, in turn.
        const std::size_t quote = line.find('"', first);
        const std::size_t end = quote == std::string::npos ? quote : line.find('"', quote + 1);
        if (end == std::string::npos)
        {
            shortened += line.substr(first);
            break;
        }
        shortened += line.substr(first, quote + 1 - first);
        shortened += withoutMiddle(line.substr(quote + 1, end - quote - 1), longestName) + '"';
        first = end + 1;
    }
    return withoutMiddle(shortened, longestText);
}

}
