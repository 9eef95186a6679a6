#pragma once

#include <tavrin/pipeline/Plan.hpp>

namespace tavrin::pipeline
{

/// Follows the execution of a plan, on the thread that executes it. As a `RunObserver` it follows every
/// algorithm. Every function does nothing unless it is overridden.
class TAVRIN_API PlanObserver : public RunObserver
{
public:
    /// An iteration begins. Not called outside of loops.
    virtual void iterationStarted(const Iteration& /*iteration*/) {}

    /// The data of a step has been read, and the algorithm is about to run.
    virtual void inputsLoaded() {}

    /// A run ended without the result that it was asked for. Its debug log may tell the reason.
    virtual void failed(const AlgorithmRun& /*run*/) {}
};

}
