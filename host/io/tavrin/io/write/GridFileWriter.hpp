#pragma once

#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/write/FunctionWriter.hpp>
#include <tavrin/io/write/StepWriter.hpp>

namespace tavrin::io
{

struct FileFormat;

/// Writes a file that holds one grid at one time.
class GridFileWriter final : public FunctionWriter
{
public:
    /// Throws `FileError` where the file cannot be created or replaced.
    GridFileWriter(const FileFormat& format, const std::filesystem::path& file,
                   const volatile bool& abortFlag);

    void append(const FunctionBase& function, const std::string& arrayName) override;

    /// Writes all functions, which share a domain and have one step each, in place of `append`.
    void write(std::span<const NamedFunction> functions);

    std::unique_ptr<PendingFile> finish() override;

private:
    const FileFormat& mFormat;
    const volatile bool& mAbortFlag;
    std::unique_ptr<OutputFile> mOutput;
};

}
