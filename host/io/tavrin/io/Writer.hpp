#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/PendingFile.hpp>

namespace tavrin::io
{

/// The extensions of the data files that are written, ".vti" and so on.
TAVRIN_API const std::vector<std::string>& writableExtensions();

/// Those of them that suit values of `numTimeSteps` steps on the domain: several steps need
/// ".pvd"; any grid goes into ".vtu".
TAVRIN_API std::vector<std::string> extensionsFor(const Domain& domain, std::size_t numTimeSteps);

/// Throws `usage_error`, naming the extensions that suit, where that of the file is none of them.
TAVRIN_API void requireSuitable(const std::filesystem::path& file, const Domain& domain,
                                std::size_t numTimeSteps);

/// Writes the grid and the values of a function, as the array `arrayName` ("values" where that is
/// empty), in the format of the file's extension. What is written reads back as the same function:
/// same points, cells, values, bit for bit, same shape, name, and time steps. Only subparametric
/// cells come back as the quadratic ones, and a ".pvd" file gives values without a time the time 0.
///
/// A ".pvd" file gets its steps in a folder of its name without the extension beside it. Files of
/// an earlier ".pvd" file there are replaced with it, others are left alone.
/// The file has everything but its name then; publishing it, which should be left to the end of
/// all work, replaces an existing one. Throws `usage_error` for an extension that does not suit the function, `FileError`
/// where the file cannot be written, and `Aborted`.
[[nodiscard]] TAVRIN_API std::unique_ptr<PendingFile> prepareFunction(
    const FunctionBase& function, const std::string& arrayName, const std::filesystem::path& file,
    const volatile bool& abortFlag);

/// Prepares functions of one step each, all on one domain, as arrays of their names in one file.
/// Throws as `prepareFunction`, and `logic_error` where the functions are not so.
[[nodiscard]] TAVRIN_API std::unique_ptr<PendingFile> prepareFunctions(
    const std::vector<std::shared_ptr<const FunctionBase>>& functions,
    const std::filesystem::path& file, const volatile bool& abortFlag);

/// Prepares a file and publishes it: a failure leaves an existing one as it was. Throws as
/// `prepareFunction`.
TAVRIN_API void writeFunction(const FunctionBase& function, const std::string& arrayName,
                              const std::filesystem::path& file, const volatile bool& abortFlag);

}
