#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/PendingFile.hpp>

#include <string>

namespace tavrin::io
{

/// A function to be written as a time series.
struct SeriesRequest
{
    const FunctionBase& function;
    /// The name of the array of its values.
    std::string arrayName;
    /// The ".pvd" file.
    std::filesystem::path file;
};

/// Writes a ".pvd" file, which lists the files of a time series, and those files: step k of
/// FOLDER/NAME.pvd is FOLDER/NAME/NAME_000k with the extension that suits the grid best. A function
/// without time steps has one step, at time 0. If the ".pvd" file is a symbolic link, FOLDER and NAME
/// are those of the file that it leads to; bytes of NAME that XML cannot hold are converted by
/// `toXmlText` in the names of the steps.
///
/// Everything is written under temporary names. Publishing moves the steps, and then the ".pvd" file,
/// to their places. Of the existing files, publishing replaces or removes the ".pvd" file, and those
/// files with names of steps in the folder NAME that this file lists or that were written as steps.
/// Throws `FileError` and `Aborted`.
std::unique_ptr<PendingFile> prepareSeries(const SeriesRequest& request,
                                           const volatile bool& abortFlag);

}
