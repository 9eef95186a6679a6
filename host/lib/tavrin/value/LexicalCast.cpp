#include <tavrin/value/LexicalCast.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/Color.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

namespace tavrin
{

namespace
{

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

[[noreturn]] void refuse(const std::string& text, const std::string& expected)
{
    throw bad_lexical_cast("\"" + text + "\" is not " + expected);
}

template<typename Number>
std::optional<Number> parsedNumber(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || rest != end)
        return std::nullopt;
    return value;
}

template<typename Number>
std::string shortest(Number value)
{
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

std::optional<Color> hexadecimalColor(std::string_view digits)
{
    if (digits.size() != 6 && digits.size() != 8)
        return std::nullopt;
    std::array<float, 4> components{0.0F, 0.0F, 0.0F, 1.0F};
    for (std::size_t i = 0; i < digits.size() / 2; ++i)
    {
        unsigned value = 0;
        const char* const pair = digits.data() + 2 * i;
        if (std::from_chars(pair, pair + 2, value, 16).ptr != pair + 2)
            return std::nullopt;
        components[i] = static_cast<float>(value) / 255.0F;
    }
    return Color{components[0], components[1], components[2], components[3]};
}

std::optional<Color> numericColor(std::string_view text)
{
    std::vector<float> components;
    for (bool more = true; more;)
    {
        const auto comma = text.find(',');
        more = comma != std::string_view::npos;
        const auto value = parsedNumber<double>(text.substr(0, comma));
        if (!value || !(*value >= 0.0 && *value <= 1.0))
            return std::nullopt;
        components.push_back(static_cast<float>(*value));
        text.remove_prefix(more ? comma + 1 : text.size());
    }
    if (components.size() == 3)
        components.push_back(1.0F);
    if (components.size() != 4)
        return std::nullopt;
    return Color{components[0], components[1], components[2], components[3]};
}

}

template<>
bool lexicalCast<bool>(const std::string& text)
{
    const auto word = trimmed(text);
    for (const auto* yes : {"true", "1", "yes", "on"})
        if (word == yes)
            return true;
    for (const auto* no : {"false", "0", "no", "off"})
        if (word == no)
            return false;
    refuse(text, "true or false");
}

template<>
long lexicalCast<long>(const std::string& text)
{
    const auto value = parsedNumber<long>(text);
    return value ? *value : (refuse(text, "a whole number"), 0);
}

template<>
double lexicalCast<double>(const std::string& text)
{
    const auto value = parsedNumber<double>(text);
    return value ? *value : (refuse(text, "a number"), 0.0);
}

template<>
std::string lexicalCast<std::string>(const std::string& text)
{
    return text;
}

template<>
Color lexicalCast<Color>(const std::string& text)
{
    const auto word = trimmed(text);
    const auto color =
        word.starts_with('#') ? hexadecimalColor(word.substr(1)) : numericColor(word);
    return color
               ? *color
               : (refuse(text, "a color: #rrggbb, #rrggbbaa, or r,g,b[,a] with components in 0..1"),
                  Color{});
}

std::string toText(bool value)
{
    return value ? "true" : "false";
}

std::string toText(long value)
{
    return shortest(value);
}

std::string toText(double value)
{
    return shortest(value);
}

std::string toText(const std::string& value)
{
    return value;
}

std::string toText(const Color& value)
{
    const std::array components{value.red, value.green, value.blue, value.alpha};
    std::string hexadecimal = "#";
    std::string numbers;
    for (const float component : components)
    {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto byte = static_cast<unsigned>(
            std::lround(std::clamp(std::isnan(component) ? 0.0F : component, 0.0F, 1.0F) * 255.0F));
        hexadecimal += digits[byte / 16];
        hexadecimal += digits[byte % 16];
        numbers += (numbers.empty() ? "" : ",") + shortest(component);
    }
    return lexicalCast<Color>(hexadecimal) == value ? hexadecimal : numbers;
}

}
