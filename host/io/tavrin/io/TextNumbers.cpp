#include <tavrin/io/TextNumbers.hpp>

#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace tavrin::io
{

namespace
{

constexpr std::size_t numbersPerAbortCheck = 65536;

bool isBlank(int character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

template<typename Number>
bool parse(std::string_view word, Number& number)
{
    if (word.starts_with('+'))
        word.remove_prefix(1);
    const char* const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, number);
    if (error == std::errc())
        return rest == end;
    if constexpr (std::is_floating_point_v<Number>)
    {
        // For a number out of range, strtod returns infinity or zero.
        if (error == std::errc::result_out_of_range && rest == end)
        {
            number = static_cast<Number>(std::strtod(std::string(word).c_str(), nullptr));
            return true;
        }
    }
    return false;
}

[[noreturn]] void fail(std::string_view word, std::size_t done, std::size_t count)
{
    if (word.empty())
        throw Malformed("the text ends after " + std::to_string(done) + " of " +
                        std::to_string(count) + " numbers");
    std::string shown(word.substr(0, 32));
    for (char& character : shown)
        if (character < ' ' || character > '~')
            character = '?';
    throw Malformed("\"" + shown + "\" stands where number " + std::to_string(done + 1) + " of " +
                    std::to_string(count) + " should be");
}

template<typename Number>
std::vector<Number> parseAll(std::string_view text, std::size_t count, const std::string& what)
{
    std::vector<Number> numbers;
    while (true)
    {
        const auto first = std::ranges::find_if_not(text, isBlank);
        const auto last = std::find_if(first, text.end(), isBlank);
        if (first == last)
            break;
        Number number{};
        if (!parse(std::string_view(first, last), number))
            throw Malformed(what + (count == 1 ? " is not a number" : " is not a list of numbers"));
        numbers.push_back(number);
        text = std::string_view(last, text.end());
    }
    if (numbers.size() != count)
        throw Malformed(what + " has " + std::to_string(numbers.size()) + " numbers, not " +
                        std::to_string(count));
    return numbers;
}

}

std::string toLower(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char character)
                           { return static_cast<char>(std::tolower(character)); });
    return result;
}

std::optional<std::size_t> parseIndex(std::string_view text)
{
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(index)
                                                                    : std::nullopt;
}

std::optional<double> parseNumber(std::string_view text)
{
    double number = 0.0;
    return parse(text, number) ? std::optional(number) : std::nullopt;
}

bool startsLikeNumber(std::string_view word)
{
    if (word.starts_with('-') || word.starts_with('+'))
        word.remove_prefix(1);
    if (word.empty())
        return false;
    const char first = word.front();
    const auto equals = [&](std::string_view name)
    {
        return word.size() >= name.size() &&
               std::ranges::equal(word.substr(0, name.size()), name,
                                  [](char a, char b) { return (a | ' ') == b; });
    };
    return (first >= '0' && first <= '9') || first == '.' || equals("nan") || equals("inf");
}

std::string_view WordReader::next()
{
    constexpr int end = std::char_traits<char>::eof();
    int character = mBuffer.sgetc();
    while (isBlank(character))
        character = mBuffer.snextc();
    std::size_t length = 0;
    while (character != end && !isBlank(character) && !(mEndsAtTag && character == '<'))
    {
        if (length < mWord.size())
            mWord[length++] = static_cast<char>(character);
        character = mBuffer.snextc();
    }
    return {mWord.data(), length};
}

void readTextNumbers(WordReader& words, const StoredArray& array, const volatile bool& abortFlag)
{
    visitPrecision(array.precision,
                   [&]<typename Stored>()
                   {
                       const std::size_t count = array.numbers();
                       for (std::size_t i = 0; i < count; ++i)
                       {
                           if (i % numbersPerAbortCheck == 0 && abortFlag)
                               throw Aborted();
                           const std::string_view word = words.next();
                           if (!parse(word, array.as<Stored>()[i]))
                               fail(word, i, count);
                       }
                   });
}

void skipTextNumbers(WordReader& words, std::size_t count, const volatile bool& abortFlag)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i % numbersPerAbortCheck == 0 && abortFlag)
            throw Aborted();
        const std::string_view word = words.next();
        if (!startsLikeNumber(word))
            fail(word, i, count);
    }
}

std::vector<double> parseNumbers(std::string_view text, std::size_t count, const std::string& what)
{
    return parseAll<double>(text, count, what);
}

std::vector<std::int64_t> parseIntegers(std::string_view text, std::size_t count,
                                        const std::string& what)
{
    return parseAll<std::int64_t>(text, count, what);
}

}
