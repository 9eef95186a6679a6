#pragma once

#include <tavrin/io/FilePlace.hpp>
#include <tavrin/io/GridBuilder.hpp>
#include <tavrin/io/Loader.hpp>

#include <mutex>
#include <set>

namespace tavrin::io
{

/// What all reading of one loader shares, the steps of its series included.
class FileAccess
{
public:
    FileAccess(Loader::Warn warn, const volatile bool& abortFlag)
        : mWarn(std::move(warn)), mAbortFlag(abortFlag)
    {
    }

    const volatile bool& abortFlag() const { return mAbortFlag; }

    /// Passes on a line that was not there before. May be called from several threads.
    void warn(const std::string& line);

    /// Throws `Malformed` for a file that cannot be read.
    std::unique_ptr<DataFile> open(const FilePlace& place) const;

    /// As `buildGrid`; passes on what was odd.
    BuiltGrid build(DataFile& file, const FilePlace& place, std::optional<std::size_t> dimension);

private:
    Loader::Warn mWarn;
    const volatile bool& mAbortFlag;
    std::mutex mMutex;
    std::set<std::string> mSaid;
};

/// Throws `Malformed` unless there is a file that is not empty and can be opened.
void requireFile(const std::filesystem::path& path);

/// The values of an array for the elements that a grid has of the file's.
StoredArray readValues(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid);

}
