#pragma once

#include <filesystem>
#include <span>

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

/// Removes files that exist. Many files are removed by several threads, since a removal mostly waits for
/// the disk, and the disk serves several of them at a time.
void removeFiles(std::span<const std::filesystem::path> files);

/// Removes a folder of files of a time series. Files of other kinds, and the folder with them, stay.
void removeMembers(const std::filesystem::path& folder);

}
