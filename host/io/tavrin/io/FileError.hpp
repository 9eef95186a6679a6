#pragma once

#include <tavrin/base/Exceptions.hpp>

#include <filesystem>

namespace tavrin::io
{

/// A file that could not be read or written. The text names the file first: "FILE: cause".
class TAVRIN_API FileError : public runtime_error
{
public:
    FileError(const std::filesystem::path& file, const std::string& cause)
        : runtime_error(file.string() + ": " + cause)
    {
    }
};

/// Reading or writing stopped because the abort flag was set.
class TAVRIN_API Aborted : public runtime_error
{
public:
    Aborted() : runtime_error("aborted") {}
};

}
