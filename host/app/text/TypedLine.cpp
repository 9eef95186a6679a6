#include "TypedLine.hpp"

#include <utility>

namespace tavrin::app
{

namespace
{

/// Whether a shell takes the character as it is in a word without quotes.
bool isPlain(char c)
{
    constexpr std::string_view punctuation = "/.,:=@%+_-";
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || punctuation.find(c) != std::string_view::npos;
}

/// What stands for a character after an open quote, or in a word without quotes.
std::string quoted(char c, char quote)
{
    constexpr std::string_view specialInDoubleQuotes = "\"\\$`";
    bool needsBackslash = false;
    if (quote == '\'')
        return c == '\'' ? "'\\''" : std::string(1, c);
    if (quote == '"')
        needsBackslash = specialInDoubleQuotes.find(c) != std::string_view::npos;
    else
        needsBackslash = !isPlain(c);
    return (needsBackslash ? "\\" : "") + std::string(1, c);
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

}

std::string TypedWord::replacement(const std::string& candidate, std::string_view harmless) const
{
    if (candidate.compare(0, kept, plain, 0, kept) != 0)
        return {};
    std::string text;
    for (std::size_t i = kept; i < candidate.size(); ++i)
    {
        // The shell replaces a tilde by the home folder only if it is not quoted.
        const bool isHome = quote == 0 && i < plain.size() && candidate[i] == '~' &&
                            (i == kept || candidate[i - 1] == '=');
        const bool isHarmless = i > 0 && harmless.find(candidate[i]) != std::string_view::npos;
        text += isHome || isHarmless ? std::string(1, candidate[i]) : quoted(candidate[i], quote);
    }
    return text;
}

TypedLine TypedLine::parse(std::string_view line, std::string_view wordBreaks)
{
    TypedLine typed;
    TypedWord& word = typed.last;
    bool isInWord = false;
    /// The end of the last character of the word that divides words.
    std::size_t lastBreak = 0;
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        const char c = line[i];
        if (word.quote == 0 && isBlank(c))
        {
            if (std::exchange(isInWord, false))
                typed.words.push_back(std::exchange(word, {}).plain);
            lastBreak = 0;
            continue;
        }
        isInWord = true;
        const bool isEscape = c == '\\' && word.quote != '\'' && i + 1 < line.size();
        if (word.quote == 0 && (c == '"' || c == '\''))
        {
            word.quote = c;
            word.kept = word.plain.size();
        }
        else if (word.quote != 0 && c == word.quote)
        {
            word.quote = 0;
            word.kept = lastBreak;
        }
        else if (isEscape)
        {
            ++i;
            if (word.quote == '"' && quoted(line[i], '"').size() == 1)
                word.plain += c;
            word.plain += line[i];
        }
        else
        {
            word.plain += c;
            if (word.quote == 0 && wordBreaks.find(c) != std::string_view::npos)
                word.kept = lastBreak = word.plain.size();
        }
    }
    return typed;
}

}
