#include <tavrin/pipeline/PipelineText.hpp>

#include <tavrin/base/Suggestion.hpp>

#include <algorithm>
#include <cctype>

namespace tavrin::pipeline
{

namespace
{

void requireIdentifier(const YamlNode& node, const std::string& what)
{
    const bool isValid =
        !node.text.empty() &&
        std::ranges::all_of(node.text, [](unsigned char c)
                            { return std::isalnum(c) != 0 || c == '_' || c == '-'; });
    if (!isValid)
        node.place.refuse(what + " \"" + node.text + "\" may consist of letters, digits, _ and -");
}

}

PipelineText::PipelineText(const std::filesystem::path& file,
                           const RegistrationService<AlgorithmFactory>& knownAlgorithms)
    : algorithms(knownAlgorithms), root(readYaml(file))
{
    root.requireKeys({"variables", "data", "for", "steps", "outputs"}, "a pipeline");
    readVariables(section("variables"));
    readData(section("data"));
    readSteps(root.required("steps", "a pipeline"));
    static_cast<void>(section("outputs").entriesOf("\"outputs\""));
    checkLoop();
}

void PipelineText::readVariables(const YamlNode& node)
{
    for (const auto& [name, value] : node.entriesOf("\"variables\""))
    {
        requireIdentifier(name, "a variable");
        if (name.text == timeVariable)
            name.place.refuse("\"time\" is the time of a loop over time steps");
        variables[name.text] = value.kind == YamlNode::Kind::Nothing
                                   ? std::nullopt
                                   : std::optional(value.textOf("the default of a variable"));
    }
}

void PipelineText::readData(const YamlNode& node) const
{
    for (const auto& [name, reference] : node.entriesOf("\"data\""))
    {
        requireIdentifier(name, "the name of data");
        static_cast<void>(reference.textOf("a reference"));
    }
}

void PipelineText::readSteps(const YamlNode& node)
{
    std::vector<std::string> algorithmNames;
    for (const auto& [name, factory] : algorithms.factories())
        algorithmNames.push_back(name);
    for (const YamlNode& step : node.itemsOf("\"steps\""))
    {
        step.requireKeys({"id", "algorithm", "options"}, "a step");
        const YamlNode& id = step.required("id", "a step");
        static_cast<void>(id.textOf("the id of a step"));
        requireIdentifier(id, "the id of a step");
        if (std::ranges::find(steps, id.text, &StepText::id) != steps.end())
            id.place.refuse("there are two steps \"" + id.text + "\"");
        if (section("data").find(id.text) != nullptr)
            id.place.refuse("\"" + id.text + "\" is the name of data, too");
        const YamlNode& algorithm = step.required("algorithm", "a step");
        static_cast<void>(algorithm.textOf("an algorithm"));
        algorithm.requireAmong(algorithmNames, "algorithm");
        steps.push_back({id.text, algorithm.text, step.find("options"), step.place});
    }
    if (steps.empty())
        node.place.refuse("a pipeline needs a step");
}

void PipelineText::checkLoop() const
{
    const YamlNode& node = section("for");
    if (node.kind == YamlNode::Kind::Text && node.text != "each-step")
        node.place.refuse("\"for\" is each-step or {VARIABLE: SET}");
    if (node.kind == YamlNode::Kind::List || node.entries.size() > 1)
        node.place.refuse("\"for\" is each-step or {VARIABLE: SET} with one variable");
    if (node.kind != YamlNode::Kind::Map || node.entries.empty())
        return;
    node.entries.front().first.requireAmong(variableNames(), "variable");
}

const YamlNode& PipelineText::section(const std::string& name) const
{
    static const YamlNode nothing;
    const YamlNode* const node = root.find(name);
    return node == nullptr ? nothing : *node;
}

std::vector<std::string> PipelineText::variableNames() const
{
    std::vector<std::string> names;
    std::ranges::transform(variables, std::back_inserter(names),
                           [](const auto& variable) { return variable.first; });
    return names;
}

}
