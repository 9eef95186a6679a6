#include "AllAlgorithms.hpp"

#include <algorithm>
#include <optional>

namespace tavrin::app
{

namespace
{

std::optional<pipeline::AlgorithmCard> describe(const std::string& name, const Session& session)
{
    const auto warn = [&](const std::string& reason)
    { session.console.message("warning: algorithm \"" + name + "\" left out: " + reason); };
    try
    {
        return pipeline::AlgorithmCard(AlgorithmRun(session.algorithms, name));
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

std::vector<pipeline::AlgorithmCard> describeAll(const Session& session)
{
    std::vector<pipeline::AlgorithmCard> cards;
    for (const auto& [name, factory] : session.algorithms.factories())
        if (auto card = describe(name, session))
            cards.push_back(std::move(*card));
    std::ranges::sort(cards, {}, &pipeline::AlgorithmCard::name);
    return cards;
}

}
