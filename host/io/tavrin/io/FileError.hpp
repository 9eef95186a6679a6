#pragma once

#include <tavrin/base/Exceptions.hpp>

#include <filesystem>

namespace tavrin::io
{

/// The error for a file that could not be read or written. Its text is "FILE: cause".
class TAVRIN_API FileError : public runtime_error
{
public:
    FileError(const std::filesystem::path& file, const std::string& cause)
        : runtime_error(file.string() + ": " + cause)
    {
    }
};

/// Thrown where reading or writing stops because the abort flag is set.
class TAVRIN_API Aborted : public runtime_error
{
public:
    Aborted() : runtime_error("aborted") {}
};

}
