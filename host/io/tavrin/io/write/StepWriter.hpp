#pragma once

#include <tavrin/function/Function.hpp>

#include <ostream>
#include <span>
#include <string>

namespace tavrin::io
{

/// A function, and the name of the array that its values are written as.
struct NamedFunction
{
    const FunctionBase& function;
    std::string name;
};

/// Writes files with one grid and values on it, one file for each time step.
class StepWriter
{
public:
    StepWriter() = default;
    StepWriter(const StepWriter&) = delete;
    StepWriter& operator=(const StepWriter&) = delete;
    virtual ~StepWriter() = default;

    /// Writes a file with the values that the functions have at a step. All functions are defined on
    /// the domain that the writer was made for. Where writing fails, the stream is left in a state
    /// of failure.
    virtual void write(std::span<const NamedFunction> functions, std::size_t step,
                       std::ostream& stream) = 0;
};

}
