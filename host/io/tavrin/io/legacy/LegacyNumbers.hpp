#pragma once

#include <tavrin/io/InputFile.hpp>
#include <tavrin/io/StoredArray.hpp>

#include <optional>
#include <string>

namespace tavrin::io
{

/// More components than any array has.
inline constexpr std::size_t maximumComponents = std::size_t{1} << 20;

/// Reads the words and arrays of a legacy VTK file in sequence. Arrays are skipped at first, and read
/// later at their position. All functions throw `Malformed` where the file does not contain what it
/// declares, and `Aborted`.
class LegacyNumbers
{
public:
    /// The position and type of an array in the file.
    struct Place
    {
        std::streamoff position = 0;
        Precision precision = Precision::Float64;
        std::size_t tuples = 0;
        std::size_t components = 1;
    };

    LegacyNumbers(InputFile file, const volatile bool& abortFlag);

    /// Whether arrays are written as big-endian numbers and not as text.
    void setBinary(bool isBinary) { mIsBinary = isBinary; }
    bool isBinary() const { return mIsBinary; }

    std::size_t position() { return static_cast<std::size_t>(mStream.tellg()); }

    /// The next word; nothing at the end of the file.
    std::optional<std::string> nextWord();
    /// The rest of the line without its end; nothing at the end of the file.
    std::optional<std::string> nextLine();

    /// The next word, or the next word as a number. `what` names it in errors.
    std::string requireWord(const char* what);
    std::size_t requireCount(const char* what);
    std::int64_t requireInteger(const char* what);
    double requireNumber(const char* what);

    /// Skips an array of numbers.
    Place skipNumbers(const std::string& typeName, std::size_t tuples, std::size_t components);
    /// Skip an array of texts or of bits.
    void skipTexts(std::size_t count);
    void skipBits(std::size_t count);

    /// Reads an array; the position in the file stays the same.
    StoredArray read(const Place& place);

private:
    std::ifstream mStream;
    std::size_t mFileSize;
    const volatile bool& mAbortFlag;
    bool mIsBinary = false;
};

}
