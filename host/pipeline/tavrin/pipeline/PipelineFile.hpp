#pragma once

#include <tavrin/pipeline/Plan.hpp>

#include <memory>

namespace tavrin::pipeline
{

struct PipelineText;

/// A pipeline as it is written in a YAML or JSON file:
///
///     variables: {a: , b: , limit: 0.1}      # a variable without a default has to be set
///     data: {reference: "${a}#velocity", other: "${b}#velocity"}
///     for: each-step                         # or {limit: "[0:1#0.1]"}
///     steps:
///       - id: onto
///         algorithm: Field/Sample Field on Given Grid
///         options: {Field: other, Grid: reference}
///       - id: difference
///         algorithm: Field/Tensor Field Operator
///         options: {Field A: reference, Field B: onto.Sampled Field, ...}
///     outputs:
///       difference.Field: difference.vtu#change
///       picture.Hedgehogs: {file: picture.png, size: 800x600, arrows: 500}
///
/// `${name}` stands for a variable, also `${time}` in a loop over time steps; `$$` is a dollar sign. A
/// data option takes the name of data, STEP.PORT for what a step publishes, a reference, or a list of
/// these for several objects. Steps may be written in any order. Names of algorithms, options and
/// outputs are exact. Relative paths start in the current folder.
///
/// What is wrong with the file is a `usage_error` "FILE:LINE:COLUMN: ...".
class TAVRIN_API PipelineFile
{
public:
    /// Reads the file and checks its structure. Throws as `readYaml`.
    PipelineFile(const std::filesystem::path& file,
                 const RegistrationService<AlgorithmFactory>& algorithms);
    ~PipelineFile();

    /// Gives a variable a value. Throws `usage_error` for an unknown one.
    void set(const std::string& variable, const std::string& value);

    Loop loop() const;

    /// The steps, each after those that it takes results of, and the outputs. Throws for a variable
    /// without a value, an unknown name, a value that an option does not take, and a cycle.
    Plan plan(const Iteration& iteration) const;

private:
    std::unique_ptr<PipelineText> mText;
};

}
