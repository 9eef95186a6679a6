#pragma once

#include <tavrin/io/FilePlace.hpp>
#include <tavrin/io/GridBuilder.hpp>
#include <tavrin/io/InputFile.hpp>
#include <tavrin/io/Loader.hpp>
#include <tavrin/io/series/Collection.hpp>

#include <list>
#include <map>
#include <mutex>

namespace tavrin::io
{

/// Everything that one loader and the series that it made share: the lists of files that were read,
/// the data files that were opened last, the warnings and the abort flag.
///
/// `open`, `build` and `warn` may be called from several threads, the other functions from one.
class FileAccess
{
public:
    FileAccess(Loader::Warn warn, const volatile bool& abortFlag)
        : mWarn(std::move(warn)), mAbortFlag(abortFlag)
    {
    }

    const volatile bool& abortFlag() const { return mAbortFlag; }

    /// Warns about a file. Of warnings that differ in their numbers only, the first one is passed on:
    /// at the end of the work of `reporting`, with the count of the others, or else at once.
    void warn(const std::filesystem::path& file, const std::string& text);

    /// Does the work, then passes on the warnings that arose in it. Returns its result.
    template<typename Work>
    auto reporting(const Work& work)
    {
        holdWarnings();
        try
        {
            auto result = work();
            releaseWarnings();
            return result;
        }
        catch (...)
        {
            releaseWarnings();
            throw;
        }
    }

    /// The content of a list of files, read on the first call. Throws as `readCollection`, and
    /// `Malformed` for a file that cannot be read.
    const Collection& collection(const std::filesystem::path& path);

    /// The file, followed by the files that it lists, and by those that these list. A file that is
    /// not a readable list lists none.
    std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path);

    /// Opens a data file. Throws `Malformed` for a file that cannot be read.
    std::unique_ptr<DataFile> open(const FilePlace& place) const;

    /// As `open`, or the same object as before if the file is one of the last that were opened and
    /// has not changed on disk.
    std::shared_ptr<DataFile> openAgain(const FilePlace& place);

    /// As `buildGrid`; passes on its warnings.
    BuiltGrid build(DataFile& file, const FilePlace& place, std::optional<std::size_t> dimension);

private:
    struct OpenedFile
    {
        std::filesystem::path path;
        std::filesystem::file_time_type changed;
        std::uintmax_t size;
        std::shared_ptr<DataFile> file;
    };
    struct Warning
    {
        std::string line;
        std::size_t repetitions = 0;
    };
    void holdWarnings();
    void releaseWarnings();
    /// The caller holds the mutex.
    void passOnWarnings();

    Loader::Warn mWarn;
    const volatile bool& mAbortFlag;
    std::mutex mMutex;
    bool mHoldsWarnings = false;
    /// By file and kind.
    std::map<std::string, Warning> mWarnings;
    /// Keys of `mWarnings` in the order in which the warnings arose.
    std::vector<std::string> mNewWarnings;
    std::map<std::filesystem::path, Collection> mCollections;
    /// The last ones that were opened, the latest first.
    std::list<OpenedFile> mOpened;
};

/// The values of an array for the elements of a grid that was built from the file.
StoredArray readValues(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid);

/// The index in the file of each value of an association; null where the indices are the same.
const std::shared_ptr<const std::vector<std::size_t>>& originOf(const BuiltGrid& grid,
                                                                Association association);

/// The marks, 1 or 0, that tell which of these values are valid; empty where the file has no such
/// array.
ValidityMask readValidity(DataFile& file, const DataFile::Array& array, const BuiltGrid& grid);

}
