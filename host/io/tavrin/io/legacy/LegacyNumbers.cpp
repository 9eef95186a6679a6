#include <tavrin/io/legacy/LegacyNumbers.hpp>

#include <tavrin/io/ByteSource.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <algorithm>
#include <limits>
#include <map>

namespace tavrin::io
{

namespace
{

constexpr std::size_t bytesPerRound = std::size_t{4} << 20;

Precision precisionNamed(const std::string& typeName)
{
    using enum Precision;
    static const std::map<std::string, Precision, std::less<>> precisions{
        {"char", Int8},
        {"signed_char", Int8},
        {"unsigned_char", UInt8},
        {"short", Int16},
        {"unsigned_short", UInt16},
        {"int", Int32},
        {"unsigned_int", UInt32},
        {"long", Int64},
        {"unsigned_long", UInt64},
        {"vtktypeint64", Int64},
        {"vtktypeuint64", UInt64},
        // Files have 32 bits for it, whatever its size in memory.
        {"vtkidtype", Int32},
        {"float", Float32},
        {"double", Float64},
    };
    const auto precision = precisions.find(toLower(typeName));
    if (precision == precisions.end())
        throw Malformed("an array is of the unknown type \"" + typeName + "\"");
    return precision->second;
}

}

LegacyNumbers::LegacyNumbers(InputFile file, const volatile bool& abortFlag)
    : mStream(std::move(file.stream)), mFileSize(file.size), mAbortFlag(abortFlag)
{
}

std::optional<std::string> LegacyNumbers::nextWord()
{
    std::string word(WordReader(mStream).next());
    return word.empty() ? std::nullopt : std::optional(std::move(word));
}

std::optional<std::string> LegacyNumbers::nextLine()
{
    std::string line;
    if (!std::getline(mStream, line))
    {
        mStream.clear();
        mStream.seekg(0, std::ios::end);
        return std::nullopt;
    }
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}

std::string LegacyNumbers::requireWord(const char* what)
{
    const auto word = nextWord();
    if (!word)
        throw Malformed(std::string("ends where ") + what + " is expected");
    return *word;
}

std::size_t LegacyNumbers::requireCount(const char* what)
{
    const std::int64_t count = requireInteger(what);
    if (count < 0 || count > std::int64_t{1} << 40)
        throw Malformed(std::string(what) + " is " + std::to_string(count));
    return static_cast<std::size_t>(count);
}

std::int64_t LegacyNumbers::requireInteger(const char* what)
{
    return parseIntegers(requireWord(what), 1, what).front();
}

double LegacyNumbers::requireNumber(const char* what)
{
    return parseNumbers(requireWord(what), 1, what).front();
}

LegacyNumbers::Place LegacyNumbers::skipNumbers(const std::string& typeName, std::size_t tuples,
                                                std::size_t components)
{
    Place place{0, precisionNamed(typeName), tuples, components};
    if (components > maximumComponents)
        throw Malformed("an array has " + std::to_string(components) + " components");
    const std::size_t numbers = tuples * components;
    if (numbers > 0 && mIsBinary)
        mStream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    place.position = mStream.tellg();
    const std::size_t bytes = mIsBinary ? numbers * sizeOf(place.precision) : numbers;
    if (place.position < 0 || bytes > mFileSize - static_cast<std::size_t>(place.position))
        throw Malformed("an array declares " + std::to_string(numbers) +
                        " numbers, more than the file can hold");
    if (mIsBinary)
    {
        mStream.seekg(static_cast<std::streamoff>(bytes), std::ios::cur);
        return place;
    }
    WordReader words(mStream);
    skipTextNumbers(words, numbers, mAbortFlag);
    return place;
}

void LegacyNumbers::skipTexts(std::size_t count)
{
    nextLine();
    for (std::size_t i = 0; i < count; ++i)
    {
        if (!mIsBinary)
        {
            if (!nextLine())
                throw Malformed("an array of texts ends too early");
            continue;
        }
        // The first two bits tell the number of bytes of the length.
        const int first = mStream.get();
        std::size_t length = static_cast<std::size_t>(first) & 63U;
        for (int more = (1 << (3 - (first >> 6 & 3))) - 1; more > 0; --more)
            length = length << 8 | static_cast<std::size_t>(mStream.get() & 255);
        if (!mStream || length > mFileSize - position())
            throw Malformed("an array of texts ends too early");
        mStream.seekg(static_cast<std::streamoff>(length), std::ios::cur);
    }
}

void LegacyNumbers::skipBits(std::size_t count)
{
    skipNumbers("unsigned_char", mIsBinary ? (count + 7) / 8 : count, 1);
}

StoredArray LegacyNumbers::read(const Place& place)
{
    mStream.clear();
    const auto before = mStream.tellg();
    mStream.seekg(place.position);
    auto array = StoredArray::allocate(place.precision, place.tuples, place.components);
    if (mIsBinary)
    {
        const std::span memory(array.data, array.tuples * array.bytesPerTuple());
        RawByteSource bytes(mStream);
        for (std::size_t done = 0; done < memory.size(); done += bytesPerRound)
        {
            if (mAbortFlag)
                throw Aborted();
            bytes.read(memory.subspan(done, std::min(bytesPerRound, memory.size() - done)));
        }
        swapBytes(memory, sizeOf(array.precision));
    }
    else
    {
        WordReader words(mStream);
        readTextNumbers(words, array, mAbortFlag);
    }
    mStream.seekg(before);
    return array;
}

}
