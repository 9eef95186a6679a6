#pragma once

#include <tavrin/io/FileError.hpp>

#include <memory>
#include <vector>

namespace tavrin::io
{

/// A file, or a file and those that it lists, that is complete but for its name. What is not
/// published is removed with the object.
class TAVRIN_API PendingFile
{
public:
    PendingFile() = default;
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    virtual ~PendingFile() = default;

    /// Gives the file its name, in place of a file that has it. Throws `FileError`.
    virtual void publish() = 0;
};

/// Files that are to appear together.
using PendingFiles = std::vector<std::unique_ptr<PendingFile>>;

}
