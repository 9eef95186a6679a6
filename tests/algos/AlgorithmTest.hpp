#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <gtest/gtest.h>

namespace tavrin
{

/// A run of one of the plug-in's algorithms.
inline AlgorithmRun makeRun(const std::string& algorithm)
{
    auto& plugins = PluginRegistrationService::getInstance();
    plugins.load(plugins.pluginFolder() / "libflaimiob.so");
    return AlgorithmRun(RegistrationService<AlgorithmFactory>::getInstance(), algorithm);
}

/// Points at 0, 1, 2, ...
inline std::shared_ptr<const Domain> lineOf(std::size_t points)
{
    return std::make_shared<UniformGrid<1>>(
        UniformGrid<1>::Layout{.size = {points, 1, 1}, .spacing = {1.0}});
}

/// Values on the points of a domain, a line unless one is given.
template<typename T>
std::shared_ptr<const Function<T>> fieldOf(std::vector<T> values,
                                           std::shared_ptr<const Domain> domain = nullptr,
                                           std::vector<double> times = {})
{
    if (domain == nullptr)
        domain = lineOf(values.size());
    return addData(std::move(domain), PointSetBase::Points, std::move(values), Precision::Float64,
                   std::move(times));
}

inline const volatile bool goOn = false;

}
