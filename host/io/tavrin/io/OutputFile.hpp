#pragma once

#include <tavrin/io/FileBuffer.hpp>
#include <tavrin/io/PendingFile.hpp>

#include <ostream>

namespace tavrin::io
{

/// The folder that the file is in; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& file);

/// "FOLDER/.tavrin-PROCESS-NUMBER.tmp", with another number for each call. A file of an earlier
/// process that was killed may have the name.
std::filesystem::path temporaryName(const std::filesystem::path& folder);

/// A file that appears under its name only when it is complete. Until then it is written under
/// another name in the same folder, and is removed when the object goes. A file that it replaces
/// leaves it its permissions.
class TAVRIN_API OutputFile final : public PendingFile
{
public:
    /// Errors name `nameInErrors`, the file itself where that is left out. Throws `FileError` where
    /// the file cannot be created, or replaced if there is one.
    OutputFile(const std::filesystem::path& file, const volatile bool& abortFlag,
               const std::filesystem::path& nameInErrors = {});
    ~OutputFile() override;

    /// Failures of this stream are reported by `complete`.
    std::ostream& stream() { return mStream; }

    /// Makes sure that everything written has reached the disk: only the name is missing then.
    /// Throws `FileError`, and `Aborted` where the abort flag is set.
    void complete();

    /// Completes the file before, unless it is. Throws as `complete`.
    void publish() override;

private:
    [[noreturn]] void fail(int error) const;

    std::filesystem::path mNameInErrors;
    /// Where a symbolic link leads to is what gets replaced.
    std::filesystem::path mFile;
    std::filesystem::path mTemporary;
    const volatile bool& mAbortFlag;
    int mDescriptor;
    FileBuffer mBuffer;
    std::ostream mStream;
};

}
