#pragma once

#include <tavrin/io/FileError.hpp>

#include <memory>
#include <vector>

namespace tavrin::io
{

/// A file, or a file and the files that it lists, that is complete except for its name. It is removed
/// with the object unless it is published.
class TAVRIN_API PendingFile
{
public:
    PendingFile() = default;
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    virtual ~PendingFile() = default;

    /// Gives the file its name; an existing file of that name is replaced. Throws `FileError`.
    virtual void publish() = 0;
};

/// Files to be published together.
using PendingFiles = std::vector<std::unique_ptr<PendingFile>>;

}
