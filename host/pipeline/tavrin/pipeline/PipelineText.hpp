#pragma once

#include <tavrin/pipeline/YamlDocument.hpp>

#include <tavrin/algorithm/AlgorithmFactory.hpp>
#include <tavrin/plugin/RegistrationService.hpp>

#include <map>
#include <optional>

namespace tavrin::pipeline
{

/// A pipeline file whose structure has been checked, but not its values.
struct PipelineText
{
    struct StepText
    {
        std::string id;
        std::string algorithm;
        /// A map, or null.
        const YamlNode* options;
        FilePlace place;
    };

    /// The variable that holds the time in a loop over time steps.
    static constexpr const char* timeVariable = "time";

    const RegistrationService<AlgorithmFactory>& algorithms;
    /// Not to be moved: steps refer to it.
    YamlNode root;
    /// By name; empty for a variable without a value.
    std::map<std::string, std::optional<std::string>> variables = {};
    std::vector<StepText> steps = {};

    PipelineText(const std::filesystem::path& file,
                 const RegistrationService<AlgorithmFactory>& knownAlgorithms);
    PipelineText(const PipelineText&) = delete;
    PipelineText& operator=(const PipelineText&) = delete;

    /// The value of a key of the file, which is nothing if it is left out.
    const YamlNode& section(const std::string& name) const;

    std::vector<std::string> variableNames() const;

private:
    void readVariables(const YamlNode& node);
    void readData(const YamlNode& node) const;
    void readSteps(const YamlNode& node);
    void checkLoop() const;
};

}
