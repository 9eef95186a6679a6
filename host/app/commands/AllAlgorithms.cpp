#include "AllAlgorithms.hpp"

#include <algorithm>
#include <optional>

namespace tavrin::app
{

namespace
{

std::optional<AlgorithmDescription> describe(const std::string& name, const Session& session)
{
    const auto warn = [&](const std::string& reason)
    { session.console.message("warning: algorithm \"" + name + "\" left out: " + reason); };
    try
    {
        return AlgorithmRun(session.algorithms, name).describe();
    }
    catch (const std::exception& error)
    {
        warn(error.what());
    }
    catch (...)
    {
        warn("its declaration throws an exception of unknown type");
    }
    return std::nullopt;
}

}

std::vector<AlgorithmDescription> describeAll(const Session& session)
{
    std::vector<AlgorithmDescription> descriptions;
    for (const auto& [name, factory] : session.algorithms.factories())
        if (auto description = describe(name, session))
            descriptions.push_back(std::move(*description));
    std::ranges::sort(descriptions, {}, &AlgorithmDescription::name);
    return descriptions;
}

}
