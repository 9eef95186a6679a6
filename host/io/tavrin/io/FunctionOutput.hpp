#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/PendingFile.hpp>

#include <optional>
#include <string>

namespace tavrin::io
{

class FunctionWriter;

/// A data file that is written as its content arrives, in the format of its extension:
///
///     FunctionOutput output("speed.pvd", abortFlag);
///     for (...)
///         output.append(*functionOfOneStep, "speed");
///     files.push_back(output.finish());
///
/// It takes memory for one step at a time, and each step may have a grid of its own. Destroying it
/// before `finish` removes what was written. The file "-.csv" is standard output, which gets its text
/// when the file is published.
class TAVRIN_API FunctionOutput
{
public:
    /// Throws `usage_error` for an extension that no format of data has, and `FileError` where the
    /// file cannot be created or replaced.
    FunctionOutput(std::filesystem::path file, const volatile bool& abortFlag);
    FunctionOutput(const FunctionOutput&) = delete;
    FunctionOutput& operator=(const FunctionOutput&) = delete;
    ~FunctionOutput();

    /// Appends all time steps of a function, as the array of this name ("values" if it is empty). A
    /// function without times has one step, at time 0 where the format gives every step a time.
    /// Throws `usage_error` where the format cannot hold the domain or another step, for a step
    /// that does not come after the one before, and for a time that is not finite; `FileError` and `Aborted`.
    void append(const FunctionBase& function, const std::string& arrayName);

    /// Completes the file, which then lacks only its name. Throws `FileError`, `Aborted`, and
    /// `logic_error` if nothing was appended or on a second call.
    [[nodiscard]] std::unique_ptr<PendingFile> finish();

private:
    std::filesystem::path mFile;
    std::unique_ptr<FunctionWriter> mWriter;
    std::size_t mNumSteps = 0;
    double mLastTime = 0.0;
};

}
