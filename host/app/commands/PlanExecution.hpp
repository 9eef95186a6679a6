#pragma once

#include "Session.hpp"

#include <tavrin/pipeline/PlanRun.hpp>

#include <optional>

namespace tavrin::app
{

/// Executes a plan, once or in a loop, and publishes its files, the report last. A report file of "-"
/// is standard output, which then holds the report alone. The files that are `alsoRead` must not be replaced. Throws as `PlanRun`.
void executePlan(const pipeline::PlanRun::MakePlan& makePlan, const pipeline::Loop& loop,
                 const std::optional<std::string>& reportFile, Session& session,
                 const pipeline::PlanRun::Paths& alsoRead = {});

/// Checks a plan as `executePlan` does, and prints what it would do.
void previewPlan(const pipeline::PlanRun::MakePlan& makePlan, const pipeline::Loop& loop,
                 Session& session);

}
