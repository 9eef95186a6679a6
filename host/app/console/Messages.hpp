#pragma once

#include <string>
#include <string_view>

namespace tavrin::app
{

/// Replaces control characters with blanks and removes blanks at the end, so that the text fits on
/// one line and cannot control a terminal. The text is expected to be UTF-8; other bytes stay.
std::string oneLine(std::string text);

/// A name in at most 200 bytes: the middle of a longer one is replaced with "...".
std::string shortened(std::string_view name);

/// A message of bounded length on one line. Names in it, which are words without blanks and
/// everything between double quotes, are shortened, and the message ends with "..." after
/// 2000 bytes.
std::string boundedMessage(const std::string& message);

}
