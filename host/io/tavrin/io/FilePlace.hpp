#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/io/FileError.hpp>

#include <memory>
#include <new>

namespace tavrin::io
{

class DataFile;

/// A data file, and how messages name it: a file that a list contains by the list.
struct FilePlace
{
    explicit FilePlace(const std::filesystem::path& file) : path(file), named(file) {}
    FilePlace(std::filesystem::path file, std::filesystem::path list, std::string memberText)
        : path(std::move(file)), named(std::move(list)), member(std::move(memberText))
    {
    }

    std::filesystem::path path;
    std::filesystem::path named;
    /// "step 1 at t = 10: block "fluid": FILE: ", or empty.
    std::string member;
    /// Where the file holds several steps: the open file, and the number of the step.
    std::shared_ptr<const DataFile> container = nullptr;
    std::size_t stepInFile = 0;
};

/// The text as one line of bounded length for a message: control characters become blanks, and long
/// quoted names and texts lose their middle.
std::string cleanLine(const std::string& text);

/// Does the work and returns its result. Exceptions that leave the work become `FileError` or
/// `usage_error` with a text that begins with the file.
template<typename Work>
decltype(auto) naming(const FilePlace& place, const Work& work)
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
        throw usage_error(place.named.string() + ": " + cleanLine(place.member + error.what()));
    }
    catch (const std::bad_alloc&)
    {
        throw FileError(place.named, place.member + "needs more memory than there is");
    }
    catch (const std::exception& error)
    {
        throw FileError(place.named, cleanLine(place.member + error.what()));
    }
}

}
