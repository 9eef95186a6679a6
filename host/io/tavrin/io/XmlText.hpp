#pragma once

#include <string>
#include <string_view>

namespace tavrin::io
{

/// The text as UTF-8: unchanged if it is valid UTF-8 without the two code points that XML forbids,
/// and otherwise converted from Latin-1, which gives every byte a meaning.
std::string toUtf8(std::string_view text);

/// The text as XML can hold it: UTF-8 with blanks in place of control characters, which no XML file
/// can contain in any form.
std::string toXmlText(std::string_view text);

/// `toXmlText` with the characters escaped that have a meaning in XML.
std::string escapeXml(std::string_view text);

}
