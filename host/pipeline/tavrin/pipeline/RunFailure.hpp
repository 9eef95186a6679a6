#pragma once

#include <tavrin/base/Exceptions.hpp>

namespace tavrin::pipeline
{

/// A run that ended without the result it was asked for.
class TAVRIN_API RunFailure : public runtime_error
{
public:
    using runtime_error::runtime_error;
};

}
