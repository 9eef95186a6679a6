#include <tavrin/pipeline/OptionAssignment.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

OptionAssignment OptionAssignment::parse(const std::string& word, const AlgorithmRun& run)
{
    const auto split = [&](std::size_t nameLength, bool pastValidator)
    {
        return OptionAssignment{word.substr(0, nameLength),
                                word.substr(nameLength + (pastValidator ? 2 : 1)), pastValidator};
    };
    std::optional<OptionAssignment> longest;
    for (const auto& option : run.describe().options)
    {
        if (!word.starts_with(option.name) ||
            (longest && longest->option.size() >= option.name.size()))
            continue;
        const std::string_view rest = std::string_view(word).substr(option.name.size());
        if (rest.starts_with('=') || rest.starts_with(":="))
            longest = split(option.name.size(), rest.starts_with(':'));
    }
    if (longest)
        return *longest;
    const auto equals = word.find('=');
    if (equals == std::string::npos)
        throw usage_error("\"" + word + "\" is not of the form NAME=VALUE");
    const bool isDirect = equals > 0 && word[equals - 1] == ':';
    auto unknown = split(isDirect ? equals - 1 : equals, isDirect);
    static_cast<void>(run.input(unknown.option));
    return unknown;
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
