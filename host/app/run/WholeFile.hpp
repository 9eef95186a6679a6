#pragma once

#include <tavrin/io/PendingFile.hpp>

#include <string_view>

namespace tavrin::app
{

/// Writes a file that is complete but for its name. Throws `FileError`, and `Aborted` soon after
/// the flag was set.
[[nodiscard]] std::unique_ptr<io::PendingFile> prepareWholeFile(const std::filesystem::path& file,
                                                                std::string_view bytes,
                                                                const volatile bool& abortFlag);

}
