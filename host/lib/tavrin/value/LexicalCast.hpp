#pragma once

#include <tavrin/base/Export.hpp>

#include <string>

namespace tavrin
{

struct Color;

/// Converts a text to a value, independent of the locale; blanks around it are ignored.
/// - bool: true, false, yes, no, on, off, 1, 0
/// - long, double: a decimal number; double also takes inf and nan
/// - std::string: the text itself
/// - Color: `#rrggbb`, `#rrggbbaa`, or `r,g,b[,a]` with components in 0..1
/// Throws `bad_lexical_cast` with a text that says what would be right.
template<typename T>
T lexicalCast(const std::string& text);

template<>
TAVRIN_API bool lexicalCast<bool>(const std::string& text);
template<>
TAVRIN_API long lexicalCast<long>(const std::string& text);
template<>
TAVRIN_API double lexicalCast<double>(const std::string& text);
template<>
TAVRIN_API std::string lexicalCast<std::string>(const std::string& text);
template<>
TAVRIN_API Color lexicalCast<Color>(const std::string& text);

/// The reverse of `lexicalCast`: numbers are written with the fewest digits that read back as the
/// same value, a color as `#rrggbbaa` where that is exact and as four numbers otherwise.
TAVRIN_API std::string toText(bool value);
TAVRIN_API std::string toText(long value);
TAVRIN_API std::string toText(double value);
TAVRIN_API std::string toText(const std::string& value);
TAVRIN_API std::string toText(const Color& value);

}
