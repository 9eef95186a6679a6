#pragma once

#include <stdexcept>

namespace tavrin::io
{

/// The error for invalid content of a file that is being read. Its text does not name the file; the
/// loader turns it into a `FileError`, which does.
class Malformed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}
