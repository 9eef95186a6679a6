#pragma once

#include <stdexcept>

namespace tavrin::io
{

/// What is wrong with a file that is being read. The loader turns it into a `FileError`, which
/// knows the file.
class Malformed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}
