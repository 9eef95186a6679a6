#include <tavrin/pipeline/PipelineFile.hpp>

#include <tavrin/pipeline/PipelinePlanner.hpp>
#include <tavrin/pipeline/PipelineText.hpp>

#include <tavrin/base/Suggestion.hpp>

namespace tavrin::pipeline
{

PipelineFile::PipelineFile(const std::filesystem::path& file,
                           const RegistrationService<AlgorithmFactory>& algorithms)
    : mText(std::make_unique<PipelineText>(file, algorithms))
{
}

PipelineFile::~PipelineFile() = default;

void PipelineFile::set(const std::string& variable, const std::string& value)
{
    const auto entry = mText->variables.find(variable);
    if (entry == mText->variables.end())
        throw usage_error("--set: the pipeline has no variable \"" + variable + "\"" +
                          suggestionFor(variable, mText->variableNames()));
    if (loop().variable == variable)
        throw usage_error("--set: the variable \"" + variable + "\" takes the values of \"for\"");
    entry->second = value;
}

Loop PipelineFile::loop() const
{
    const YamlNode& node = mText->section("for");
    if (node.kind == YamlNode::Kind::Text)
        return {.kind = Loop::Kind::EachStep};
    if (node.entries.empty())
        return {};
    const auto& [variable, set] = node.entries.front();
    const std::string& expression = set.textOf("the values of \"" + variable.text + "\"");
    return {.kind = Loop::Kind::Sweep,
            .variable = variable.text,
            .values = at(set.place, [&] { return sweepValues(expression); })};
}

Plan PipelineFile::plan(const Iteration& iteration) const
{
    return planOf(*mText, iteration);
}

}
