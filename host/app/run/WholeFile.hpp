#pragma once

#include <filesystem>
#include <string_view>

namespace tavrin::app
{

/// Writes a file that appears under its name when it is complete, so that a failure leaves an
/// existing one as it was. Throws `FileError`, and `Aborted` soon after the flag was set.
void writeWholeFile(const std::filesystem::path& file, std::string_view bytes,
                    const volatile bool& abortFlag);

}
