#pragma once

#include <tavrin/pipeline/AlgorithmCard.hpp>
#include <tavrin/pipeline/Json.hpp>

namespace tavrin::pipeline
{

/// A JSON Schema (draft 2020-12) of pipeline files, with the options of these algorithms, for editors and
/// programs that write pipelines. What depends on other parts of the file, such as names of steps, is
/// not part of it.
TAVRIN_API Json pipelineSchema(std::span<const AlgorithmCard> algorithms);

}
