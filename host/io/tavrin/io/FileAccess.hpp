#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/GridBuilder.hpp>
#include <tavrin/io/Loader.hpp>

#include <mutex>
#include <new>
#include <set>

namespace tavrin::io
{

/// Where a data file is, and how messages name it: a step of a series by the series.
struct FilePlace
{
    explicit FilePlace(const std::filesystem::path& file) : path(file), named(file) {}
    FilePlace(std::filesystem::path file, std::filesystem::path series, std::string stepText)
        : path(std::move(file)), named(std::move(series)), step(std::move(stepText))
    {
    }

    std::filesystem::path path;
    std::filesystem::path named;
    /// "step 1 at t = 10: FILE: ", or nothing.
    std::string step;
};

/// The text on one line that can be shown, shortened where it is very long.
std::string cleanLine(std::string text);

/// Does the work and names the file in all that goes wrong in it.
template<typename Work>
auto naming(const FilePlace& place, const Work& work)
{
    try
    {
        return work();
    }
    catch (const FileError&)
    {
        throw;
    }
    catch (const Aborted&)
    {
        throw;
    }
    catch (const usage_error& error)
    {
        throw usage_error(cleanLine(place.named.string() + ": " + place.step + error.what()));
    }
    catch (const std::bad_alloc&)
    {
        throw FileError(place.named, place.step + "needs more memory than there is");
    }
    catch (const std::exception& error)
    {
        throw FileError(place.named, cleanLine(place.step + error.what()));
    }
}

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
    void warn(const FilePlace& place, const std::string& text);

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
