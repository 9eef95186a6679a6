#pragma once

#include <tavrin/pipeline/Json.hpp>

#include <tavrin/pipeline/AlgorithmCard.hpp>

namespace tavrin::app
{

/// The declaration of an algorithm and the current values of its options, for a person to read.
std::string algorithmSheet(const pipeline::AlgorithmCard& card);

/// The same for programs: name, description, options [{name, kind, help, group, afterSeparator,
/// required, visible, default, value, choices, types, references [{kind, placeholder}],
/// connected}], outputs [{name, kind, types}].
pipeline::Json algorithmJson(const pipeline::AlgorithmCard& card);

}
