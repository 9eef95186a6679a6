#pragma once

#include <tavrin/io/StoredArray.hpp>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace tavrin::io
{

std::string toLower(std::string_view text);

/// The words and arrays of a legacy VTK file, one after the other. Arrays are gone past and noted,
/// to be read when they are asked for. Everything throws `Malformed` where the file does not have
/// what it says, and `Aborted`.
class LegacyNumbers
{
public:
    /// An array somewhere in the file.
    struct Place
    {
        std::streamoff position = 0;
        Precision precision = Precision::Float64;
        std::size_t tuples = 0;
        std::size_t components = 1;
    };

    LegacyNumbers(const std::filesystem::path& path, const volatile bool& abortFlag);

    /// Whether arrays are written as bytes, the highest first, and not as text.
    void setBinary(bool isBinary) { mIsBinary = isBinary; }
    bool isBinary() const { return mIsBinary; }

    std::size_t position() { return static_cast<std::size_t>(mStream.tellg()); }

    /// The next word; nothing at the end of the file.
    std::optional<std::string> nextWord();
    /// The rest of the line without its end; nothing at the end of the file, where it stays.
    std::optional<std::string> nextLine();

    /// The same for what has to be there; `what` says what that is.
    std::string requireWord(const char* what);
    std::size_t requireCount(const char* what);
    std::int64_t requireInteger(const char* what);
    double requireNumber(const char* what);

    /// Goes past an array of numbers.
    Place skipNumbers(const std::string& typeName, std::size_t tuples, std::size_t components);
    /// Goes past an array of texts or of bits.
    void skipTexts(std::size_t count);
    void skipBits(std::size_t count);

    /// Reads an array and comes back to where it was.
    StoredArray read(const Place& place);

private:
    std::ifstream mStream;
    std::size_t mFileSize;
    const volatile bool& mAbortFlag;
    bool mIsBinary = false;
};

}
