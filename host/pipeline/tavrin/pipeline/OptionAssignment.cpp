#include <tavrin/pipeline/OptionAssignment.hpp>

#include <algorithm>
#include <string_view>

namespace tavrin::pipeline
{

namespace
{

/// Splits the word after the name of the option.
OptionAssignment split(const std::string& word, std::size_t nameLength, bool isDirect)
{
    return {.option = word.substr(0, nameLength),
            .value = word.substr(nameLength + (isDirect ? 2 : 1)),
            .isDirect = isDirect,
            .reference = std::nullopt};
}

/// The assignment to the option with the longest name that fits the word, if any does.
std::optional<OptionAssignment> splitAtKnownName(const std::string& word, const AlgorithmRun& run)
{
    std::optional<OptionAssignment> longest;
    for (const auto& option : run.describe().options)
    {
        if (!word.starts_with(option.name) ||
            (longest && longest->option.size() >= option.name.size()))
            continue;
        const std::string_view rest = std::string_view(word).substr(option.name.size());
        if (rest.starts_with('=') || rest.starts_with(":="))
            longest = split(word, option.name.size(), rest.starts_with(':'));
    }
    return longest;
}

OptionAssignment splitAtFirstEquals(const std::string& word)
{
    const auto equals = word.find('=');
    if (equals == std::string::npos)
        throw usage_error("\"" + word + "\" is not of the form NAME=VALUE");
    const bool isDirect = equals > 0 && word[equals - 1] == ':';
    return split(word, isDirect ? equals - 1 : equals, isDirect);
}

}

OptionAssignment OptionAssignment::parse(const std::string& word, const AlgorithmRun& run)
{
    const auto known = splitAtKnownName(word, run);
    OptionAssignment assignment = known ? *known : splitAtFirstEquals(word);
    // Throws for an unknown name.
    const InputBase& input = run.input(assignment.option);
    if (takesData(input) && !assignment.isDirect && !assignment.value.empty())
        assignment.reference = ObjectReference::parse(assignment.value, input);
    return assignment;
}

std::vector<OptionAssignment> parseAssignments(const std::vector<std::string>& words,
                                               const AlgorithmRun& run)
{
    std::vector<OptionAssignment> assignments;
    for (const std::string& word : words)
    {
        auto assignment = OptionAssignment::parse(word, run);
        const bool isRepeated = std::ranges::find(assignments, assignment.option,
                                                  &OptionAssignment::option) != assignments.end();
        if (isRepeated && run.input(assignment.option).kind() != InputKind::Bundle)
            throw usage_error("option \"" + assignment.option + "\" is given twice");
        assignments.push_back(std::move(assignment));
    }
    return assignments;
}

}
