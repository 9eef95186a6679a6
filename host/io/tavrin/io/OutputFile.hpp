#pragma once

#include <tavrin/io/PendingFile.hpp>

#include <functional>
#include <ostream>
#include <string_view>

namespace tavrin::io
{

class FileBuffer;

/// Whether the path stands for standard output: "-" for text, "-.csv" for tables.
TAVRIN_API bool isStandardOutput(const std::filesystem::path& file);

/// Names the descriptor of standard output, for a program that has moved it; 1 by default.
TAVRIN_API void setStandardOutput(int descriptor);

/// The file that a path leads to if symbolic links are followed, also where the last link leads to
/// a file that does not exist yet. Standard output is a file
/// in "/proc/self/fd". A link that stands for an open stream, such as "/dev/stdout", is
/// not followed further than to "/proc/self/fd/NUMBER".
TAVRIN_API std::filesystem::path followLinks(std::filesystem::path file);

/// Throws `FileError` where a file cannot be created or replaced, whatever its content is.
TAVRIN_API void requireWritable(const std::filesystem::path& file);

/// A file that appears under its name when it is published. Until then its content is in a
/// temporary file in the same folder, which is removed with the object. If the name is a symbolic
/// link, the file that it leads to is written. A replaced file leaves its permissions to the new one.
///
/// A device, a pipe or an open stream, such as standard output, is never replaced: publishing writes
/// the content to it, and nothing is written to it before.
///
///     OutputFile file("report.json", abortFlag);
///     file.stream() << text;
///     file.complete();
///     ...
///     file.publish();
class TAVRIN_API OutputFile final : public PendingFile
{
public:
    /// Errors name `nameInErrors`, or the file if that is empty. Throws `FileError` where the file
    /// cannot be created or replaced.
    OutputFile(const std::filesystem::path& file, const volatile bool& abortFlag,
               const std::filesystem::path& nameInErrors = {});
    ~OutputFile() override;

    /// Failures of this stream are reported by `complete`.
    std::ostream& stream() { return mStream; }

    /// Makes sure that all that was written has reached the disk, so that only the name is missing.
    /// Throws `FileError`, and `Aborted` where the abort flag is set.
    void complete();

    /// Calls `work` with one piece after the other of what was written so far. Throws as `complete`.
    void readBack(const std::function<void(std::string_view)>& work);

    /// Gives the file its name, or writes a device or an open stream; completes the file first if
    /// that has not been done. Throws as `complete`.
    void publish() override;

private:
    [[noreturn]] void fail(int error) const;
    int openContent();
    void requireNoError();
    void copyToSink();

    std::filesystem::path mNameInErrors;
    /// With links followed.
    std::filesystem::path mFile;
    std::filesystem::path mTemporary;
    const volatile bool& mAbortFlag;
    /// The device, pipe or stream to write to; -1 where a file is replaced.
    int mSink = -1;
    int mContent = -1;
    bool mIsComplete = false;
    std::unique_ptr<FileBuffer> mBuffer;
    std::ostream mStream;
};

}
