#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/io/FileError.hpp>

#include <new>

namespace tavrin::io
{

/// Where a data file is, and how messages name it: one that a list holds by the list.
struct FilePlace
{
    explicit FilePlace(const std::filesystem::path& file) : path(file), named(file) {}
    FilePlace(std::filesystem::path file, std::filesystem::path list, std::string memberText)
        : path(std::move(file)), named(std::move(list)), member(std::move(memberText))
    {
    }

    std::filesystem::path path;
    std::filesystem::path named;
    /// "step 1 at t = 10: block "fluid": FILE: ", or nothing.
    std::string member;
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
        throw usage_error(cleanLine(place.named.string() + ": " + place.member + error.what()));
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
