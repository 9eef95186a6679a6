#pragma once

#include <tavrin/io/ByteSource.hpp>
#include <tavrin/io/InputFile.hpp>
#include <tavrin/io/StoredArray.hpp>
#include <tavrin/io/xml/BlockInflater.hpp>

#include <vtkSmartPointer.h>

#include <optional>
#include <string>

class vtkXMLDataElement;
class vtkXMLDataParser;

namespace tavrin::io
{

/// The elements of a VTK XML file, and the numbers in them.
///
/// VTK's parser provides the elements. The numbers are decoded here, because VTK's decoder trusts
/// the sizes that a file declares, and leaves the rest of an array uninitialized where the data is
/// truncated.
class XmlValues
{
public:
    /// Throws `Malformed` for a file that is not a VTK XML file.
    XmlValues(InputFile file, const volatile bool& abortFlag);
    ~XmlValues();
    XmlValues(const XmlValues&) = delete;
    XmlValues& operator=(const XmlValues&) = delete;

    vtkXMLDataElement& root() const { return *mRoot; }

    /// The text of an attribute, if there is one.
    static std::optional<std::string> attribute(vtkXMLDataElement& element, const char* name);
    /// A number of elements; 0 where there is no such attribute. Throws `Malformed` for a text that is
    /// not such a number.
    static std::size_t countAttribute(vtkXMLDataElement& element, const char* name);
    /// The type of the numbers; nothing for arrays of bits and texts.
    static std::optional<Precision> precisionOf(vtkXMLDataElement& array);
    static std::size_t componentsOf(vtkXMLDataElement& array);

    /// Throws `Malformed` where the array does not have this number of numbers, as far as that can be
    /// seen without reading it. To be called before memory is allocated for them.
    void require(vtkXMLDataElement& array, std::size_t numbers);

    /// Fills the target with all numbers of the array, in the precision of the file.
    void read(vtkXMLDataElement& array, const StoredArray& target);

    /// Reads all numbers of an array.
    StoredArray read(vtkXMLDataElement& array, std::size_t tuples, std::size_t components);

private:
    struct Blocks
    {
        std::vector<std::size_t> compressed;
        std::vector<std::size_t> plain;
    };
    void requireUnnamed(vtkXMLDataElement& array, std::size_t numbers);
    void readUnnamed(vtkXMLDataElement& array, const StoredArray& target);
    bool isText(vtkXMLDataElement& array) const;
    /// Moves the stream to the beginning of the array's content, and returns the decoder for it.
    std::unique_ptr<ByteSource> open(vtkXMLDataElement& array);
    std::size_t remainingBytes();
    std::size_t readHeaderNumber(ByteSource& bytes) const;
    Blocks readBlockSizes(ByteSource& bytes, std::size_t neededBytes);
    /// A block in the memory of a round, and where it is inflated to.
    struct InflatedBlock
    {
        std::size_t first;
        std::size_t size;
        std::span<std::byte> output;
    };
    void readCompressed(ByteSource& bytes, std::span<std::byte> target);
    void inflate(std::span<const std::byte> input, std::span<const InflatedBlock> blocks,
                 std::span<const std::unique_ptr<BlockInflater>> inflaters) const;
    void readPlain(ByteSource& bytes, std::span<std::byte> target) const;

    std::ifstream mStream;
    std::size_t mFileSize = 0;
    const volatile bool& mAbortFlag;
    vtkSmartPointer<vtkXMLDataParser> mParser;
    vtkXMLDataElement* mRoot = nullptr;
    /// Empty where arrays are not compressed.
    std::string mCompressor;
    bool mIsBigEndian = false;
    std::size_t mHeaderNumberBytes = 4;
    bool mAppendedIsRaw = false;
};

}
