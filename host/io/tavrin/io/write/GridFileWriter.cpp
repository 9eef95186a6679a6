#include <tavrin/io/write/GridFileWriter.hpp>

#include <tavrin/io/Formats.hpp>

namespace tavrin::io
{

GridFileWriter::GridFileWriter(const FileFormat& format, const std::filesystem::path& file,
                               const volatile bool& abortFlag)
    : mFormat(format), mAbortFlag(abortFlag), mOutput(std::make_unique<OutputFile>(file, abortFlag))
{
}

void GridFileWriter::append(const FunctionBase& function, const std::string& arrayName)
{
    const std::vector<NamedFunction> functions{{function, arrayName}};
    write(functions);
}

void GridFileWriter::write(std::span<const NamedFunction> functions)
{
    const Domain& domain = *functions.front().function.domain();
    mFormat.makeWriter(domain, mAbortFlag)->write(functions, 0, mOutput->stream());
}

std::unique_ptr<PendingFile> GridFileWriter::finish()
{
    mOutput->complete();
    return std::move(mOutput);
}

}
