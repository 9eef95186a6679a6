#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrin::app
{

/// A word of a shell's command line that has been typed up to the cursor.
struct TypedWord
{
    /// Without quotes and backslashes.
    std::string plain = {};
    /// The quote that is open at the cursor, or 0.
    char quote = 0;
    /// The number of bytes at the start of `plain` that the shell keeps: it replaces only what follows.
    std::size_t kept = 0;

    /// The part of a candidate, a plain word, that replaces what the shell does not keep, with the
    /// quotes or backslashes that it needs; `harmless` are further characters that need none after the
    /// first character of a word. Empty for a candidate that does not begin with what is kept.
    std::string replacement(const std::string& candidate, std::string_view harmless) const;

    /// The part of `plain` that is replaced.
    std::string_view replaced() const { return std::string_view(plain).substr(kept); }
};

/// A command line up to the cursor.
struct TypedLine
{
    /// The complete words, without quotes and backslashes.
    std::vector<std::string> words = {};
    /// The word at the cursor; empty after a blank.
    TypedWord last = {};

    /// Splits a line as a POSIX shell does. `wordBreaks` are the characters that divide words for
    /// completion, besides blanks, as in the variable COMP_WORDBREAKS of bash. An open quote divides
    /// words as well.
    static TypedLine parse(std::string_view line, std::string_view wordBreaks);
};

}
