#include <tavrin/io/xml/XmlValues.hpp>

#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <vtkCallbackCommand.h>
#include <vtkObjectFactory.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>

#include <omp.h>

namespace tavrin::io
{

namespace
{

/// VTK's parser, made to stop at the abort flag and to ignore elements below a maximum depth.
class TreeParser : public vtkXMLDataParser
{
public:
    static TreeParser* New();
    TreeParser(const TreeParser&) = delete;
    TreeParser& operator=(const TreeParser&) = delete;

    const volatile bool* abortFlag = nullptr;

protected:
    TreeParser() = default;
    ~TreeParser() override = default;

    void StartElement(const char* name, const char** attributes) override
    {
        if (mDepth++ < maximumDepth)
            vtkXMLDataParser::StartElement(name, attributes);
    }
    void EndElement(const char* name) override
    {
        if (--mDepth < maximumDepth)
            vtkXMLDataParser::EndElement(name);
    }
    int ParsingComplete() override { return *abortFlag ? 1 : vtkXMLDataParser::ParsingComplete(); }

private:
    // VTK deletes nested elements by recursion.
    static constexpr int maximumDepth = 32;
    int mDepth = 0;
};

TreeParser* TreeParser::New()
{
    VTK_STANDARD_NEW_BODY(TreeParser);
}

/// Keeps a VTK object from printing its errors and warnings, and remembers the first one.
vtkSmartPointer<vtkCallbackCommand> listenTo(vtkObject& object, std::string& complaint)
{
    vtkSmartPointer<vtkCallbackCommand> listener = vtkSmartPointer<vtkCallbackCommand>::New();
    listener->SetClientData(&complaint);
    listener->SetCallback(
        [](vtkObject*, unsigned long, void* remembered, void* text)
        {
            auto& first = *static_cast<std::string*>(remembered);
            if (first.empty() && text != nullptr)
                first = static_cast<const char*>(text);
        });
    object.AddObserver(vtkCommand::ErrorEvent, listener);
    object.AddObserver(vtkCommand::WarningEvent, listener);
    return listener;
}

/// The error of VTK's parser, without its place in the source of VTK.
std::string causeOf(const std::string& complaint)
{
    const auto textAfter = [&](const std::string& marker) -> std::string
    {
        const std::size_t found = complaint.find(marker);
        if (found == std::string::npos)
            return {};
        const std::size_t first = found + marker.size();
        return complaint.substr(first, complaint.find_first_of("\r\n", first) - first);
    };
    if (const std::string place = textAfter(" in stream at "); !place.empty())
        return "not a whole XML file: " + place;
    if (const std::string cause = textAfter("): "); !cause.empty())
        return "not a VTK XML file that can be read: " + cause;
    return "not a whole XML file";
}

/// How messages name an array. Points and coordinates need not have a name of their own.
std::string describe(vtkXMLDataElement& array)
{
    if (const auto name = XmlValues::attribute(array, "Name"); name && !name->empty())
        return "array \"" + *name + "\"";
    vtkXMLDataElement* const section = array.GetParent();
    return "the array of " + std::string(section == nullptr ? "the file" : section->GetName());
}

/// Does the work. Texts of `Malformed` that leave it begin with the array.
template<typename Work>
void namingArray(vtkXMLDataElement& array, const Work& work)
{
    try
    {
        work();
    }
    catch (const Malformed& error)
    {
        throw Malformed(describe(array) + ": " + error.what());
    }
}

/// Throws `Malformed` unless an array has the bytes that it needs. One with more bytes belongs to
/// another grid than the file declares, so that its values would be read for the wrong elements.
void requireBytes(std::size_t needed, std::size_t available)
{
    if (available != needed)
        throw Malformed("needs " + std::to_string(needed) + " bytes and has " +
                        std::to_string(available));
}

/// A bound for the compression ratio of all compressors.
constexpr std::size_t bestCompression = 10000;

constexpr std::size_t plainBytesPerRound = std::size_t{4} << 20;

/// The memory for compressed blocks.
constexpr std::size_t compressedBytesPerRound = std::size_t{16} << 20;

}

XmlValues::XmlValues(InputFile file, const volatile bool& abortFlag)
    : mStream(std::move(file.stream)), mFileSize(file.size), mAbortFlag(abortFlag)
{
    std::string complaint;
    const auto parser = vtkSmartPointer<TreeParser>::New();
    const auto listener = listenTo(*parser, complaint);
    parser->abortFlag = &abortFlag;
    parser->SetStream(&mStream);
    parser->SetIgnoreCharacterData(1);
    const bool isParsed = parser->Parse() != 0;
    parser->RemoveObserver(listener);
    if (abortFlag)
        throw Aborted();
    if (!isParsed || parser->GetRootElement() == nullptr)
        throw Malformed(causeOf(complaint));
    mParser = parser;
    mRoot = parser->GetRootElement();
    if (std::strcmp(mRoot->GetName(), "VTKFile") != 0)
        throw Malformed("not a VTK XML file: its root element is \"" +
                        std::string(mRoot->GetName()) + "\", not \"VTKFile\"");

    mIsBigEndian = attribute(*mRoot, "byte_order") == "BigEndian";
    mHeaderNumberBytes = attribute(*mRoot, "header_type") == "UInt64" ? 8 : 4;
    if (const auto compressor = attribute(*mRoot, "compressor"); compressor && !compressor->empty())
    {
        // Throws for an unknown one.
        makeInflater(*compressor);
        mCompressor = *compressor;
    }
    if (vtkXMLDataElement* const appended = mRoot->FindNestedElementWithName("AppendedData"))
        mAppendedIsRaw = attribute(*appended, "encoding") == "raw";
}

XmlValues::~XmlValues() = default;

std::optional<std::string> XmlValues::attribute(vtkXMLDataElement& element, const char* name)
{
    const char* const text = element.GetAttribute(name);
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

std::size_t XmlValues::countAttribute(vtkXMLDataElement& element, const char* name)
{
    const auto text = attribute(element, name);
    if (!text)
        return 0;
    const std::int64_t count = parseIntegers(*text, 1, name).front();
    if (count < 0 || count > std::int64_t{1} << 40)
        throw Malformed(std::string(name) + " is " + std::to_string(count));
    return static_cast<std::size_t>(count);
}

std::optional<Precision> XmlValues::precisionOf(vtkXMLDataElement& array)
{
    using enum Precision;
    static const std::map<std::string, Precision, std::less<>> precisions{
        {"Int8", Int8},       {"Int16", Int16},     {"Int32", Int32},    {"Int64", Int64},
        {"UInt8", UInt8},     {"UInt16", UInt16},   {"UInt32", UInt32},  {"UInt64", UInt64},
        {"Float32", Float32}, {"Float64", Float64}, {"vtkIdType", Int64}};
    const auto found = precisions.find(attribute(array, "type").value_or(""));
    return found == precisions.end() ? std::nullopt : std::optional(found->second);
}

std::size_t XmlValues::componentsOf(vtkXMLDataElement& array)
{
    return std::max<std::size_t>(1, countAttribute(array, "NumberOfComponents"));
}

bool XmlValues::isText(vtkXMLDataElement& array) const
{
    const std::string format = attribute(array, "format").value_or("ascii");
    if (format != "ascii" && format != "binary" && format != "appended")
        throw Malformed("unknown array format \"" + format + "\"");
    return format == "ascii";
}

std::size_t XmlValues::remainingBytes()
{
    const auto position = static_cast<std::size_t>(mStream.tellg());
    return position < mFileSize ? mFileSize - position : 0;
}

std::unique_ptr<ByteSource> XmlValues::open(vtkXMLDataElement& array)
{
    mStream.clear();
    if (attribute(array, "format") == "appended")
    {
        if (mParser->GetAppendedDataPosition() == 0)
            throw Malformed("the appended data is missing");
        const std::size_t offset = countAttribute(array, "offset");
        mStream.seekg(mParser->GetAppendedDataPosition() + static_cast<std::streamoff>(offset));
        if (mAppendedIsRaw)
            return std::make_unique<RawByteSource>(mStream);
        return std::make_unique<Base64ByteSource>(mStream);
    }
    // The content of the element follows its opening tag. A ">" in the text of an attribute does not
    // end the tag.
    mStream.seekg(array.GetXMLByteIndex());
    char quote = 0;
    for (char character = 0; mStream.get(character) && (quote != 0 || character != '>');)
    {
        if (quote == 0 && (character == '"' || character == '\''))
            quote = character;
        else if (character == quote)
            quote = 0;
    }
    return std::make_unique<Base64ByteSource>(mStream);
}

std::size_t XmlValues::readHeaderNumber(ByteSource& bytes) const
{
    std::array<std::byte, 8> number{};
    const auto used = std::span(number).first(mHeaderNumberBytes);
    bytes.read(used);
    if (mIsBigEndian)
        std::ranges::reverse(used);
    std::uint64_t value = 0;
    std::memcpy(&value, number.data(), number.size());
    return value;
}

XmlValues::Blocks XmlValues::readBlockSizes(ByteSource& bytes, std::size_t neededBytes)
{
    const std::size_t available = remainingBytes();
    const std::size_t count = readHeaderNumber(bytes);
    const std::size_t plainSize = readHeaderNumber(bytes);
    const std::size_t lastPlainSize = readHeaderNumber(bytes);
    if (count > available)
        throw Malformed("the data is truncated");

    Blocks blocks;
    std::size_t compressedBytes = 0;
    std::size_t plainBytes = 0;
    for (std::size_t block = 0; block < count && plainBytes <= neededBytes; ++block)
    {
        const std::size_t compressed = readHeaderNumber(bytes);
        const std::size_t plain =
            block + 1 == count && lastPlainSize > 0 ? lastPlainSize : plainSize;
        if (compressed > available - compressedBytes)
            throw Malformed("the data is truncated");
        if (plain == 0 || plain / bestCompression > compressed + 1)
            throw Malformed("a compressed block of " + std::to_string(compressed) +
                            " bytes cannot hold " + std::to_string(plain));
        compressedBytes += compressed;
        plainBytes += plain;
        blocks.compressed.push_back(compressed);
        blocks.plain.push_back(plain);
    }
    if (blocks.plain.size() < count)
        throw Malformed("needs " + std::to_string(neededBytes) + " bytes and has more");
    requireBytes(neededBytes, plainBytes);
    return blocks;
}

void XmlValues::require(vtkXMLDataElement& array, std::size_t numbers)
{
    namingArray(array, [&] { requireUnnamed(array, numbers); });
}

void XmlValues::requireUnnamed(vtkXMLDataElement& array, std::size_t numbers)
{
    const std::size_t bytesPerNumber = sizeOf(precisionOf(array).value());
    const auto bytes = open(array);
    const std::size_t available = remainingBytes();
    const bool text = isText(array);
    if (numbers > available && (text || mCompressor.empty()))
        throw Malformed("declares " + std::to_string(numbers) +
                        " numbers, more than the file can hold");
    if (numbers == 0 || text)
        return;
    if (numbers > static_cast<std::size_t>(-1) / bytesPerNumber)
        throw Malformed("declares more numbers than can be handled");
    const std::size_t needed = numbers * bytesPerNumber;
    if (!mCompressor.empty())
        readBlockSizes(*bytes, needed);
    else
    {
        requireBytes(needed, readHeaderNumber(*bytes));
        if (needed > available)
            throw Malformed("the data is truncated");
    }
}

void XmlValues::readPlain(ByteSource& bytes, std::span<std::byte> target) const
{
    for (std::size_t done = 0; done < target.size(); done += plainBytesPerRound)
    {
        if (mAbortFlag)
            throw Aborted();
        bytes.read(target.subspan(done, std::min(plainBytesPerRound, target.size() - done)));
    }
}

void XmlValues::readCompressed(ByteSource& bytes, std::span<std::byte> target)
{
    const Blocks blocks = readBlockSizes(bytes, target.size());
    const auto numThreads = static_cast<std::size_t>(omp_get_max_threads());
    std::vector<std::unique_ptr<BlockInflater>> inflaters;
    for (std::size_t i = 0; i < std::min(numThreads, blocks.plain.size()); ++i)
        inflaters.push_back(makeInflater(mCompressor));
    std::vector<std::byte> input;
    // Successive blocks are read together, and inflated by all threads.
    for (std::size_t first = 0; first < blocks.plain.size();)
    {
        std::vector<InflatedBlock> round;
        std::size_t inputSize = 0;
        for (; first < blocks.plain.size() && inputSize < compressedBytesPerRound; ++first)
        {
            round.push_back(
                {inputSize, blocks.compressed[first], target.subspan(0, blocks.plain[first])});
            target = target.subspan(blocks.plain[first]);
            inputSize += blocks.compressed[first];
        }
        input.resize(inputSize);
        bytes.read(input);
        inflate(input, round, inflaters);
    }
}

void XmlValues::inflate(std::span<const std::byte> input, std::span<const InflatedBlock> blocks,
                        std::span<const std::unique_ptr<BlockInflater>> inflaters) const
{
    std::atomic<bool> isDamaged = false;
#pragma omp parallel for schedule(dynamic) num_threads(static_cast<int>(inflaters.size()))
    for (std::size_t i = 0; i < blocks.size(); ++i)
    {
        const InflatedBlock& block = blocks[i];
        if (mAbortFlag || isDamaged)
            continue;
        BlockInflater& inflater = *inflaters[static_cast<std::size_t>(omp_get_thread_num())];
        if (!inflater.inflate(input.subspan(block.first, block.size), block.output))
            isDamaged = true;
    }
    if (mAbortFlag)
        throw Aborted();
    if (isDamaged)
        throw Malformed("the compressed data is damaged");
}

void XmlValues::read(vtkXMLDataElement& array, const StoredArray& target)
{
    namingArray(array, [&] { readUnnamed(array, target); });
}

void XmlValues::readUnnamed(vtkXMLDataElement& array, const StoredArray& target)
{
    if (target.numbers() == 0)
        return;
    const auto bytes = open(array);
    if (isText(array))
    {
        WordReader words(mStream, true);
        readTextNumbers(words, target, mAbortFlag);
        if (!words.next().empty())
            throw Malformed("needs " + std::to_string(target.numbers()) + " numbers and has more");
        return;
    }
    const std::size_t bytesPerNumber = sizeOf(target.precision);
    const std::span memory(target.data, target.numbers() * bytesPerNumber);
    if (!mCompressor.empty())
    {
        readCompressed(*bytes, memory);
    }
    else
    {
        readHeaderNumber(*bytes);
        readPlain(*bytes, memory);
    }
    // The data of other arrays may follow an appended array, but nothing follows an inline one.
    if (attribute(array, "format") == "binary" && dynamic_cast<Base64ByteSource&>(*bytes).hasMore())
        throw Malformed("needs " + std::to_string(memory.size()) + " bytes and has more");
    if (mIsBigEndian)
        swapBytes(memory, bytesPerNumber);
}

StoredArray XmlValues::read(vtkXMLDataElement& array, std::size_t tuples, std::size_t components)
{
    const auto precision = precisionOf(array);
    if (!precision)
        throw Malformed("an array has no type of number");
    require(array, tuples * components);
    auto result = StoredArray::allocate(*precision, tuples, components);
    read(array, result);
    return result;
}

}
