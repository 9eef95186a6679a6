#include <tavrin/io/tables/Table.hpp>

#include <tavrin/base/TeamFailure.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/io/XmlText.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

namespace tavrin::io
{

namespace
{

constexpr std::size_t bytesPerChunk = std::size_t{1} << 20;

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

/// Whether a line is empty or a comment.
bool isSkipped(std::string_view line)
{
    const std::string_view content = trimmed(line);
    return content.empty() || content.front() == '#';
}

/// Takes the first line, without its end, off the text.
std::string_view takeLine(std::string_view& text)
{
    const auto* const end = static_cast<const char*>(std::memchr(text.data(), '\n', text.size()));
    const std::size_t length =
        end == nullptr ? text.size() : static_cast<std::size_t>(end - text.data());
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return line;
}

/// Takes the first line off the text, which is longer where the end of a line stands in quotes.
std::string_view takeHeader(std::string_view& text)
{
    std::size_t end = 0;
    for (bool isQuoted = false; end < text.size() && (isQuoted || text[end] != '\n'); ++end)
        isQuoted = isQuoted != (text[end] == '"');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// The fields of a line, with their quotes.
class Fields
{
public:
    Fields(std::string_view line, char separator) : mRest(line), mSeparator(separator) {}

    /// A separator at the end of the line is followed by an empty field.
    bool hasNext() const { return mHasNext; }

    std::string_view next()
    {
        std::size_t end = 0;
        for (bool isQuoted = false; end < mRest.size() && (isQuoted || mRest[end] != mSeparator);
             ++end)
            isQuoted = isQuoted != (mRest[end] == '"');
        const std::string_view field = mRest.substr(0, end);
        mHasNext = end < mRest.size();
        mRest.remove_prefix(mHasNext ? end + 1 : end);
        return trimmed(field);
    }

private:
    std::string_view mRest;
    char mSeparator;
    bool mHasNext = true;
};

/// The content of a field without the quotes around it.
std::string unquoted(std::string_view field)
{
    if (field.size() < 2 || field.front() != '"' || field.back() != '"')
        return std::string(field);
    std::string content;
    for (std::size_t i = 1; i + 1 < field.size(); ++i)
    {
        content += field[i];
        if (field[i] == '"' && field[i + 1] == '"')
            ++i;
    }
    return content;
}

std::vector<std::string> namesIn(std::string_view line, char separator)
{
    std::vector<std::string> names;
    for (Fields fields(line, separator); fields.hasNext();)
        names.push_back(toUtf8(unquoted(fields.next())));
    return names;
}

/// The separator that is most frequent outside of quotes.
char separatorOf(std::string_view header)
{
    constexpr std::array candidates{',', ';', '\t'};
    std::array<std::size_t, candidates.size()> counts{};
    bool isQuoted = false;
    for (const char character : header)
    {
        isQuoted = isQuoted != (character == '"');
        const auto candidate = std::ranges::find(candidates, character);
        if (!isQuoted && candidate != candidates.end())
            ++counts[static_cast<std::size_t>(candidate - candidates.begin())];
    }
    return candidates[static_cast<std::size_t>(std::ranges::max_element(counts) - counts.begin())];
}

/// A number, or NaN for an empty field; nothing for other texts.
std::optional<double> toNumber(std::string_view field)
{
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"')
        field = trimmed(field.substr(1, field.size() - 2));
    if (field.empty())
        return std::numeric_limits<double>::quiet_NaN();
    return parseNumber(field);
}

bool holdsNumbers(const std::vector<std::string>& fields)
{
    return std::ranges::all_of(fields, [](const std::string& field)
                               { return toNumber(field).has_value(); });
}

/// A piece of the text that ends with the end of a line.
struct Chunk
{
    std::string_view text;
    std::size_t lines = 0;
    std::size_t rows = 0;
    std::size_t firstLine = 0;
    std::size_t firstRow = 0;
};

class TableReader
{
public:
    TableReader(std::string_view text, const volatile bool& abortFlag)
        : mText(text), mAbortFlag(abortFlag)
    {
    }

    Table read();

private:
    void readHeader();
    std::vector<Chunk> findChunks();
    void readRows(const Chunk& chunk);
    void readRow(std::string_view line, std::size_t number, double* target) const;

    /// What has not been read yet, and the number of its first line.
    std::string_view mText;
    std::size_t mLine = 1;
    const volatile bool& mAbortFlag;
    char mSeparator = ',';
    Table mTable;
};

void TableReader::readHeader()
{
    if (mText.starts_with("\xEF\xBB\xBF"))
        mText.remove_prefix(3);
    std::string_view comment;
    while (true)
    {
        if (mText.empty())
            throw Malformed("holds no table");
        std::string_view rest = mText;
        const std::string_view line = takeLine(rest);
        if (!isSkipped(line))
            break;
        if (!trimmed(line).empty())
            comment = trimmed(line).substr(1);
        mText = rest;
        ++mLine;
    }
    std::string_view rest = mText;
    const std::string_view line = takeHeader(rest);
    mSeparator = separatorOf(line);
    mTable.columns = namesIn(line, mSeparator);
    if (!holdsNumbers(mTable.columns))
    {
        mText = rest;
        mLine += 1 + static_cast<std::size_t>(std::ranges::count(line, '\n'));
        return;
    }
    const std::size_t count = mTable.columns.size();
    mTable.columns = namesIn(comment, mSeparator);
    if (mTable.columns.size() != count || holdsNumbers(mTable.columns))
        throw Malformed("line " + std::to_string(mLine) +
                        " holds numbers; a header line with the names of the columns is missing");
}

std::vector<Chunk> TableReader::findChunks()
{
    std::vector<Chunk> chunks;
    while (!mText.empty())
    {
        std::size_t size = std::min(bytesPerChunk, mText.size());
        size = std::min(mText.find('\n', size - 1), mText.size() - 1) + 1;
        chunks.push_back({mText.substr(0, size)});
        mText.remove_prefix(size);
    }
#pragma omp parallel for schedule(dynamic)
    for (std::size_t i = 0; i < chunks.size(); ++i)
        for (std::string_view text = chunks[i].text; !text.empty();)
        {
            ++chunks[i].lines;
            chunks[i].rows += isSkipped(takeLine(text)) ? 0 : 1;
        }
    for (Chunk& chunk : chunks)
    {
        chunk.firstLine = mLine;
        chunk.firstRow = mTable.rows;
        mLine += chunk.lines;
        mTable.rows += chunk.rows;
    }
    return chunks;
}

void TableReader::readRow(std::string_view line, std::size_t number, double* target) const
{
    const std::vector<std::string>& names = mTable.columns;
    const auto place = [&] { return "line " + std::to_string(number) + ": "; };
    Fields fields(line, mSeparator);
    for (std::size_t column = 0; column < names.size(); ++column)
    {
        if (!fields.hasNext())
            throw Malformed(place() + "has " + std::to_string(column) + " fields, not " +
                            std::to_string(names.size()));
        const std::string_view field = fields.next();
        const auto value = toNumber(field);
        if (!value)
            throw Malformed(place() + "column " + std::to_string(column + 1) + ", \"" +
                            names[column] + "\": \"" + toUtf8(field) + "\" is not a number");
        target[column] = *value;
    }
    if (fields.hasNext())
        throw Malformed(place() + "has more fields than the " + std::to_string(names.size()) +
                        " in the header");
}

void TableReader::readRows(const Chunk& chunk)
{
    if (mAbortFlag)
        throw Aborted();
    std::size_t number = chunk.firstLine;
    std::size_t row = chunk.firstRow;
    for (std::string_view text = chunk.text; !text.empty(); ++number)
        if (const std::string_view line = takeLine(text); !isSkipped(line))
            readRow(line, number, mTable.numbers.data() + mTable.columns.size() * row++);
}

Table TableReader::read()
{
    readHeader();
    const std::vector<Chunk> chunks = findChunks();
    mTable.numbers.resize(mTable.rows * mTable.columns.size());
    // The first error in the text is the one to be told, whichever thread finds one first.
    std::vector<TeamFailure> failures(chunks.size());
#pragma omp parallel for schedule(dynamic)
    for (std::size_t i = 0; i < chunks.size(); ++i)
        failures[i].guard([&] { readRows(chunks[i]); });
    for (const TeamFailure& failure : failures)
        failure.rethrow();
    return std::move(mTable);
}

}

Table readTable(InputFile file, const volatile bool& abortFlag)
{
    LargeVector<char> text(file.size);
    for (std::size_t done = 0; done < text.size();)
    {
        if (abortFlag)
            throw Aborted();
        const std::size_t count = std::min(bytesPerChunk, text.size() - done);
        if (!file.stream.read(text.data() + done, static_cast<std::streamsize>(count)))
            throw Malformed("ends while it is read");
        done += count;
    }
    return TableReader({text.data(), text.size()}, abortFlag).read();
}

}
