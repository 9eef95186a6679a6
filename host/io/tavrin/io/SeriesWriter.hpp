#pragma once

#include <tavrin/io/PendingFile.hpp>

#include <functional>
#include <ostream>
#include <string>

namespace tavrin::io
{

/// Writes a ".pvd" file, which lists the files of a time series, and those files: step k of
/// FOLDER/NAME.pvd is FOLDER/NAME/NAME_000k with the extension `memberExtension`.
///
/// `writeMember(k, stream)` writes the file of one step; there is one, at time 0, where there are
/// no time steps. Everything is written under temporary names, and takes its place at once when it
/// is published, the ".pvd" file last. Of what is there already only the ".pvd" file, and those files of
/// this naming scheme in the folder NAME that it lists, are replaced or removed.
/// Throws `FileError`, and `Aborted`.
std::unique_ptr<PendingFile> prepareSeries(
    const std::filesystem::path& file, const std::string& memberExtension,
    const std::vector<double>& timeSteps,
    const std::function<void(std::size_t step, std::ostream& stream)>& writeMember,
    const volatile bool& abortFlag);

/// Whether a file has the folder and the name of a step of the series: writing that may replace or
/// remove it. Nothing is a step of a `series` that is no ".pvd" file.
TAVRIN_API bool isStepOf(const std::filesystem::path& file, const std::filesystem::path& series);

}
