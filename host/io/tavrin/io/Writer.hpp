#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/Formats.hpp>
#include <tavrin/io/PendingFile.hpp>

namespace tavrin::io
{

/// Throws `usage_error`, naming the extensions that suit, where values of `numTimeSteps` steps on the
/// domain cannot be written to a file with this extension.
TAVRIN_API void requireSuitable(const std::filesystem::path& file, const Domain& domain,
                                std::size_t numTimeSteps);

/// Throws `usage_error` for a function with a time that is not finite: no reader would take it back.
TAVRIN_API void requireFiniteTimes(const std::filesystem::path& file, const FunctionBase& function);

/// Writes the grid and the values of a function in the format of the file's extension, as the array
/// `arrayName` ("values" if that is empty). What is written reads back as the same function: same
/// points, cells, values, bit for bit, same shape, name, time steps and validity. The exceptions
/// are: subparametric cells come back as the quadratic ones, a ".pvd" file gives values without a
/// time the time 0, and a name that XML cannot hold is converted by `toXmlText`.
///
/// A ".pvd" file gets its steps in a folder of its name, without the extension, beside it. Files that
/// an earlier run wrote there are replaced, others are left alone.
///
/// The returned file lacks only its name: publishing it replaces an existing file, and should be
/// left to the end of all work. Throws `usage_error` for an extension that does not suit the
/// function, `FileError` where the file cannot be written, and `Aborted`.
[[nodiscard]] TAVRIN_API std::unique_ptr<PendingFile> prepareFunction(
    const FunctionBase& function, const std::string& arrayName, const std::filesystem::path& file,
    const volatile bool& abortFlag);

/// Prepares a file with several functions as arrays of their names. The functions must have one
/// step each and share a domain. Throws as `prepareFunction`, and `logic_error` for other functions.
[[nodiscard]] TAVRIN_API std::unique_ptr<PendingFile> prepareFunctions(
    const std::vector<std::shared_ptr<const FunctionBase>>& functions,
    const std::filesystem::path& file, const volatile bool& abortFlag);

/// Prepares a file and publishes it. A failure leaves an existing file as it was. Throws as
/// `prepareFunction`.
TAVRIN_API void writeFunction(const FunctionBase& function, const std::string& arrayName,
                              const std::filesystem::path& file, const volatile bool& abortFlag);

/// Whether a file has the folder and the name of a step of the series: writing the series may
/// replace or remove it. False if `series` is not a file that lists time steps.
TAVRIN_API bool isStepOf(const std::filesystem::path& file, const std::filesystem::path& series);

}
