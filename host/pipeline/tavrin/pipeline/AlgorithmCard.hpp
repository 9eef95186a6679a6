#pragma once

#include <tavrin/pipeline/DataKinds.hpp>

#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <map>

namespace tavrin::pipeline
{

/// The name of the algorithm that a person means, as in `matchingName`. Throws `usage_error` for a text
/// that fits none or several.
TAVRIN_API std::string algorithmNamed(const std::string& text,
                                      const RegistrationService<AlgorithmFactory>& algorithms);

/// How data is given to an option by reference.
struct DataInput
{
    /// The kinds that the option accepts; none for a class that no reference can give.
    std::vector<const DataKind*> kinds;
    /// "FILE#ARRAY", "FILE or FILE#ARRAY".
    std::string placeholder;
};

/// What a front end shows of an algorithm: its declaration, and what its data options take.
struct TAVRIN_API AlgorithmCard : AlgorithmDescription
{
    /// By the names of the data and bundle options.
    std::map<std::string, DataInput> dataInputs;

    explicit AlgorithmCard(const AlgorithmRun& run);

    /// What the option takes, or null for an option that takes no data.
    const DataInput* dataInput(const Option& option) const;
};

}
