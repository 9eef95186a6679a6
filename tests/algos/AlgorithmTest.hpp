#pragma once

#include <support/abortFlags.hpp>
#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <gtest/gtest.h>

namespace support
{

/// A run of one of the algorithms of libflaimiob.
inline tavrin::AlgorithmRun makeRun(const std::string& algorithm)
{
    auto& plugins = tavrin::PluginRegistrationService::getInstance();
    plugins.load(plugins.pluginFolder() / "libflaimiob.so");
    return {tavrin::RegistrationService<tavrin::AlgorithmFactory>::getInstance(), algorithm};
}

}
