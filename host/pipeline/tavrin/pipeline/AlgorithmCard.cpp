#include <tavrin/pipeline/AlgorithmCard.hpp>

#include <tavrin/pipeline/NameMatch.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

std::string algorithmNamed(const std::string& text,
                           const RegistrationService<AlgorithmFactory>& algorithms)
{
    std::vector<std::string> names;
    for (const auto& [name, factory] : algorithms.factories())
        names.push_back(name);
    std::ranges::sort(names);
    const auto name = matchingName(text, names, "algorithm");
    // Throws for an unknown name, with the nearest one.
    return name ? *name : AlgorithmRun(algorithms, text).describe().name;
}

AlgorithmCard::AlgorithmCard(const AlgorithmRun& run) : AlgorithmDescription(run.describe())
{
    for (const Option& option : options)
        if (const InputBase& input = run.input(option.name); takesData(input))
            dataInputs.try_emplace(option.name, DataInput{kindsOf(input), placeholderOf(input)});
}

const DataInput* AlgorithmCard::dataInput(const Option& option) const
{
    const auto found = dataInputs.find(option.name);
    return found == dataInputs.end() ? nullptr : &found->second;
}

}
