#pragma once

#include "Candidate.hpp"

#include <filesystem>

namespace tavrin::app
{

/// A path as the shell sees it: a tilde at its start is the home folder.
std::filesystem::path expandedPath(const std::string& typed);

/// Folders, and the files that have one of the extensions, in lower case with a dot. A name that
/// begins with a dot is offered only if the dot has been typed.
Candidates fileCandidates(const std::string& typed, std::span<const std::string> extensions);

/// What completes a reference to data, FILE#ARRAY?key=value: files that can be read, then what the
/// file holds. Arrays are offered if `takesArray`. A file that cannot be read, or not before the abort
/// flag is set, holds nothing.
Candidates referenceCandidates(const std::string& typed, bool takesArray,
                               const volatile bool& abortFlag);

}
