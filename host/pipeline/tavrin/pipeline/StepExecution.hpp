#pragma once

#include <tavrin/pipeline/PlanObserver.hpp>

// What the execution of one step consists of, besides reading its inputs and writing its outputs.

namespace tavrin::pipeline
{

/// The outputs of a step that are to be written.
std::vector<const OutputRequest*> requestsFor(std::size_t step, const Plan& plan);

/// Throws `usage_error` if a required option takes no object.
void requireInputs(const Step& step, const AlgorithmRun& run);

/// Executes the algorithm of a step. An announced result that a requested file cannot hold ends it.
/// Throws what the algorithm throws, `usage_error` without required data, and `io::Aborted` after an
/// abort.
void executeStep(AlgorithmRun& run, const std::vector<const OutputRequest*>& requests,
                 RunObserver& observer, const volatile bool& abortFlag);

/// Executes the algorithm in advance, to learn what it suggests: shows its progress, but nothing that
/// it prints. Throws as `executeStep`.
void executeInAdvance(AlgorithmRun& run, RunObserver& observer, const volatile bool& abortFlag);

/// Throws `RunFailure` if a result that is needed was not published, or if an algorithm without
/// outputs had nothing to report. If the algorithm gave no hint, the last line of its logs becomes
/// part of the message.
void requireResults(const AlgorithmRun& run, std::size_t index, const Plan& plan,
                    PlanObserver& observer);

}
