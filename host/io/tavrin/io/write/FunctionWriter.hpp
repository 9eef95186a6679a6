#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/PendingFile.hpp>

#include <string>

namespace tavrin::io
{

/// Writes one data file of a format as its content arrives.
class FunctionWriter
{
public:
    FunctionWriter() = default;
    FunctionWriter(const FunctionWriter&) = delete;
    FunctionWriter& operator=(const FunctionWriter&) = delete;
    virtual ~FunctionWriter() = default;

    /// Appends all time steps of a function, as the array of this name. The format holds the domain
    /// and the number of steps appended so far, and the times ascend from call to call. Throws
    /// `FileError` and `Aborted`.
    virtual void append(const FunctionBase& function, const std::string& arrayName) = 0;

    /// Completes the file, to which something was appended. To be called once. Throws as `append`.
    virtual std::unique_ptr<PendingFile> finish() = 0;
};

/// The times of the steps of a function as formats need them that give every step a time: 0 for a
/// function without times.
inline std::vector<double> writtenTimes(const FunctionBase& function)
{
    return function.timeSteps().empty() ? std::vector{0.0} : function.timeSteps();
}

}
