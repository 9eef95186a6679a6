#include <tavrin/io/FilePlace.hpp>

#include <algorithm>

namespace tavrin::io
{

std::string cleanLine(std::string text)
{
    constexpr std::size_t longest = 2000;
    std::ranges::replace_if(
        text, [](char character) { return character >= 0 && character < ' '; }, ' ');
    if (text.size() > longest)
        text = text.substr(0, longest) + "...";
    return text;
}

}
