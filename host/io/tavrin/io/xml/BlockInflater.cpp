#include <tavrin/io/xml/BlockInflater.hpp>

#include <tavrin/io/Malformed.hpp>

#include <vtkCallbackCommand.h>
#include <vtkLZ4DataCompressor.h>
#include <vtkLZMADataCompressor.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>

#include <libdeflate.h>

#include <new>

namespace tavrin::io
{

namespace
{

class ZlibInflater final : public BlockInflater
{
public:
    ZlibInflater() : mDecompressor(libdeflate_alloc_decompressor())
    {
        if (mDecompressor == nullptr)
            throw std::bad_alloc();
    }
    ~ZlibInflater() override { libdeflate_free_decompressor(mDecompressor); }

    bool inflate(std::span<const std::byte> block, std::span<std::byte> output) override
    {
        // Without a place for the size, success means that the output is full.
        return libdeflate_zlib_decompress(mDecompressor, block.data(), block.size(), output.data(),
                                          output.size(), nullptr) == LIBDEFLATE_SUCCESS;
    }

private:
    libdeflate_decompressor* mDecompressor;
};

/// Uses one of VTK's compressors.
template<typename Compressor>
class VtkInflater final : public BlockInflater
{
public:
    VtkInflater()
    {
        // VTK does not print errors that are observed.
        vtkNew<vtkCallbackCommand> silence;
        silence->SetCallback([](vtkObject*, unsigned long, void*, void*) {});
        mCompressor->AddObserver(vtkCommand::ErrorEvent, silence);
        mCompressor->AddObserver(vtkCommand::WarningEvent, silence);
    }

    bool inflate(std::span<const std::byte> block, std::span<std::byte> output) override
    {
        return mCompressor->Uncompress(
                   reinterpret_cast<const unsigned char*>(block.data()), block.size(),
                   reinterpret_cast<unsigned char*>(output.data()), output.size()) == output.size();
    }

private:
    vtkNew<Compressor> mCompressor;
};

}

std::unique_ptr<BlockInflater> makeInflater(const std::string& compressor)
{
    if (compressor == "vtkZLibDataCompressor")
        return std::make_unique<ZlibInflater>();
    if (compressor == "vtkLZ4DataCompressor")
        return std::make_unique<VtkInflater<vtkLZ4DataCompressor>>();
    if (compressor == "vtkLZMADataCompressor")
        return std::make_unique<VtkInflater<vtkLZMADataCompressor>>();
    throw Malformed("unknown compressor \"" + compressor + "\"");
}

}
