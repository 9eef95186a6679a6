#include <tavrin/pipeline/OptionAssignment.hpp>

#include <tavrin/pipeline/NameMatch.hpp>

#include <algorithm>
#include <string_view>

namespace tavrin::pipeline
{

namespace
{

DividedAssignment divideAfter(const std::string& word, std::size_t nameLength, bool isDirect)
{
    return {word.substr(0, nameLength), word.substr(nameLength + (isDirect ? 2 : 1)), isDirect};
}

/// The word divided after the longest name of an option that fits it, if any does.
std::optional<DividedAssignment> divideAtKnownName(const std::string& word,
                                                   const std::vector<std::string>& names)
{
    std::optional<DividedAssignment> longest;
    for (const std::string& name : names)
    {
        if (!word.starts_with(name) || (longest && longest->option.size() >= name.size()))
            continue;
        const std::string_view rest = std::string_view(word).substr(name.size());
        if (rest.starts_with('=') || rest.starts_with(":="))
            longest = divideAfter(word, name.size(), rest.starts_with(':'));
    }
    return longest;
}

DividedAssignment divideAtFirstEquals(const std::string& word,
                                      const std::vector<std::string>& names)
{
    const auto equals = word.find('=');
    if (equals == std::string::npos)
        throw usage_error("\"" + word + "\" is not of the form NAME=VALUE");
    const bool isDirect = equals > 0 && word[equals - 1] == ':';
    DividedAssignment divided = divideAfter(word, isDirect ? equals - 1 : equals, isDirect);
    divided.option = matchingName(divided.option, names, "option").value_or(divided.option);
    return divided;
}

bool canBeAutomatic(const InputBase& input)
{
    switch (input.kind())
    {
    case InputKind::Boolean:
    case InputKind::Integer:
    case InputKind::Number:
    case InputKind::Color:
        return true;
    case InputKind::Text:
    case InputKind::Choice:
    case InputKind::Label:
    case InputKind::Data:
    case InputKind::Bundle:
        return false;
    }
    return false;
}

}

std::vector<std::string> optionNames(const AlgorithmDescription& algorithm)
{
    std::vector<std::string> names;
    std::ranges::transform(algorithm.options, std::back_inserter(names),
                           &AlgorithmDescription::Option::name);
    return names;
}

DividedAssignment DividedAssignment::divide(const std::string& word,
                                            const std::vector<std::string>& optionNames)
{
    const auto known = divideAtKnownName(word, optionNames);
    return known ? *known : divideAtFirstEquals(word, optionNames);
}

OptionAssignment OptionAssignment::make(std::string option, std::string value, bool isDirect,
                                        const AlgorithmRun& run)
{
    // Throws for an unknown name.
    const InputBase& input = run.input(option);
    OptionAssignment assignment{
        .option = std::move(option), .value = std::move(value), .isDirect = isDirect};
    if (isDirect)
        return assignment;
    if (takesData(input) && !assignment.value.empty())
        assignment.reference = ObjectReference::parse(assignment.value, input);
    assignment.isAutomatic = canBeAutomatic(input) && assignment.value == "auto";
    if (const auto* const choices = dynamic_cast<const InputChoices*>(&input))
        assignment.value =
            matchingName(assignment.value, choices->choices(), "choice").value_or(assignment.value);
    return assignment;
}

OptionAssignment OptionAssignment::parse(const std::string& word, const AlgorithmRun& run)
{
    const auto [name, value, isDirect] =
        DividedAssignment::divide(word, optionNames(run.describe()));
    return make(name, value, isDirect, run);
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
