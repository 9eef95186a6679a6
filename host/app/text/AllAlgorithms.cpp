#include "AllAlgorithms.hpp"

#include <algorithm>

namespace tavrin::app
{

std::vector<AlgorithmDescription> describeAll(const Session& session)
{
    std::vector<AlgorithmDescription> descriptions;
    for (const auto& [name, factory] : session.algorithms.factories())
    {
        try
        {
            descriptions.push_back(AlgorithmRun(session.algorithms, name).describe());
        }
        catch (const std::exception& error)
        {
            session.console.line("warning: algorithm \"" + name + "\": " + error.what());
        }
    }
    std::ranges::sort(descriptions, {}, &AlgorithmDescription::name);
    return descriptions;
}

}
