#pragma once

#include <filesystem>

namespace tavrin::io
{

/// The folder of a file; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& file);

/// "FOLDER/.tavrin-PROCESS-NUMBER.tmp", with a new number for each call. An earlier process that was
/// killed may have left a file with that name.
std::filesystem::path temporaryName(const std::filesystem::path& folder);

/// Marks an open temporary file or folder as used by this process, as long as it is open.
void claimTemporary(int descriptor);

/// Removes the temporary files and folders that killed processes left in a folder: those whose
/// process does not exist and that nobody claims. Looks into each folder once in a run.
void removeAbandoned(const std::filesystem::path& folder);

/// Removes a folder of files of a time series. Files of other kinds, and the folder with them, stay.
void removeMembers(const std::filesystem::path& folder);

}
