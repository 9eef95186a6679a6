#pragma once

#include <tavrin/io/write/FunctionWriter.hpp>

namespace tavrin::io
{

/// Makes the writer of a ".pvd" file, which lists the files of a time series, and of those files: step
/// k of FOLDER/NAME.pvd is FOLDER/NAME/NAME_000k with the extension that suits its grid best. If the
/// ".pvd" file is a symbolic link, FOLDER and NAME are those of the file that it leads to; bytes of
/// NAME that XML cannot hold are converted by `toXmlText` in the names of the steps.
///
/// Each step is written to a temporary folder when it is appended. Publishing moves the steps, and
/// then the ".pvd" file, to their places. Of the existing files, publishing replaces or removes the
/// ".pvd" file, and those files with names of steps in the folder NAME that this file lists or that
/// were written as steps. Throws `FileError` where the file cannot be created or replaced.
std::unique_ptr<FunctionWriter> startPvd(const std::filesystem::path& file,
                                         const volatile bool& abortFlag);

}
