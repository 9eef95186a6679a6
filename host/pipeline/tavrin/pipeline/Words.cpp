#include <tavrin/pipeline/Words.hpp>

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace tavrin::pipeline
{

std::string joined(std::span<const std::string> texts, std::string_view separator)
{
    std::string text;
    for (std::size_t i = 0; i < texts.size(); ++i)
        text.append(i == 0 ? "" : separator).append(texts[i]);
    return text;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(std::move(line));
    return lines;
}

std::string shortestText(double number)
{
    return fmt::format("{}", number);
}

std::string shellWord(const std::string& word)
{
    const auto isPlain = [](unsigned char c)
    {
        return std::isalnum(c) != 0 ||
               std::string_view("_-+./,:=@%#").find(static_cast<char>(c)) != std::string_view::npos;
    };
    if (!word.empty() && word.front() != '#' && std::ranges::all_of(word, isPlain))
        return word;
    std::string quoted = "\"";
    for (const char c : word)
    {
        if (std::string_view("\"\\$`").find(c) != std::string_view::npos)
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

}
