#include <tavrin/pipeline/AlgorithmCard.hpp>

namespace tavrin::pipeline
{

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
