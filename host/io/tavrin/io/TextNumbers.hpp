#pragma once

#include <tavrin/io/StoredArray.hpp>

#include <istream>
#include <string_view>

namespace tavrin::io
{

/// Words separated by blanks, taken one after the other from a stream.
class WordReader
{
public:
    /// A `<` ends the text if `endsAtTag` is set.
    explicit WordReader(std::istream& stream, bool endsAtTag = false)
        : mBuffer(*stream.rdbuf()), mEndsAtTag(endsAtTag)
    {
    }

    /// The next word, valid until the next call; empty at the end. What exceeds the longest word
    /// that can be a number is cut.
    std::string_view next();

private:
    std::streambuf& mBuffer;
    bool mEndsAtTag;
    std::array<char, 256> mWord;
};

/// Fills `array` with numbers written as text; infinite ones and NaN are numbers. Throws
/// `Malformed` where the text ends early or holds something else, and `Aborted`.
void readTextNumbers(WordReader& words, const StoredArray& array, const volatile bool& abortFlag);

/// Goes past `count` words that look like numbers. Throws as `readTextNumbers`.
void skipTextNumbers(WordReader& words, std::size_t count, const volatile bool& abortFlag);

/// The numbers of a text such as "0 9 0 9 0 0". Throws `Malformed`, calling the text `what`, unless
/// there are exactly `count`.
std::vector<double> parseNumbers(std::string_view text, std::size_t count, const std::string& what);
std::vector<std::int64_t> parseIntegers(std::string_view text, std::size_t count,
                                        const std::string& what);

}
