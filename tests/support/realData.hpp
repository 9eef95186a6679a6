#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace support
{

/// The folder of real data sets, which the environment variable TAVRIN_TEST_DATA names.
inline std::optional<std::filesystem::path> realDataFolder()
{
    const char* const folder = std::getenv("TAVRIN_TEST_DATA");
    return folder != nullptr ? std::optional<std::filesystem::path>(folder) : std::nullopt;
}

}
