#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/io/PendingFile.hpp>

#include <string_view>

namespace tavrin::pipeline
{

/// Writes the bytes of a file, which gets its name when it is published. Throws `FileError`, and
/// `Aborted` soon after the flag is set.
[[nodiscard]] TAVRIN_API std::unique_ptr<io::PendingFile> prepareWholeFile(
    const std::filesystem::path& file, std::string_view bytes, const volatile bool& abortFlag);

}
