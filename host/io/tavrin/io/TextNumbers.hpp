#pragma once

#include <tavrin/io/StoredArray.hpp>

#include <istream>
#include <optional>
#include <string_view>

namespace tavrin::io
{

/// Reads words that are separated by blanks from a stream.
class WordReader
{
public:
    /// If `endsAtTag` is set, a `<` ends the text.
    explicit WordReader(std::istream& stream, bool endsAtTag = false)
        : mBuffer(*stream.rdbuf()), mEndsAtTag(endsAtTag)
    {
    }

    /// The next word, valid until the next call; empty at the end. Words longer than any number are
    /// truncated.
    std::string_view next();

private:
    std::streambuf& mBuffer;
    bool mEndsAtTag;
    std::array<char, 256> mWord;
};

/// The text with the letters A to Z in lower case.
std::string toLower(std::string_view text);

/// The text as an index, all of whose characters are digits; nothing for other texts.
std::optional<std::size_t> parseIndex(std::string_view text);

/// The text as a number, which may be infinite or NaN; nothing for other texts.
std::optional<double> parseNumber(std::string_view text);

/// Whether a word could be a number by its first characters.
bool startsLikeNumber(std::string_view word);

/// Fills `array` with numbers written as text, including infinities and NaN. Throws `Malformed` where
/// the text ends early or contains anything else, and `Aborted`.
void readTextNumbers(WordReader& words, const StoredArray& array, const volatile bool& abortFlag);

/// Skips `count` words that look like numbers. Throws as `readTextNumbers`.
void skipTextNumbers(WordReader& words, std::size_t count, const volatile bool& abortFlag);

/// The numbers of a text such as "0 9 0 9 0 0". Throws `Malformed` unless there are exactly `count`;
/// the error calls the text `what`.
std::vector<double> parseNumbers(std::string_view text, std::size_t count, const std::string& what);
std::vector<std::int64_t> parseIntegers(std::string_view text, std::size_t count,
                                        const std::string& what);

}
