#include <tavrin/pipeline/PlanRun.hpp>

#include <tavrin/pipeline/OutputChecks.hpp>
#include <tavrin/pipeline/RunFailure.hpp>
#include <tavrin/pipeline/StepExecution.hpp>

#include <tavrin/io/OutputFile.hpp>

#include <algorithm>
#include <chrono>

namespace tavrin::pipeline
{

namespace
{

/// Adds the time of a piece of work to a sum.
template<typename Work>
void timed(double& seconds, const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Puts a member at the beginning of an object.
Json withFirst(const std::string& name, Json value, const Json& object)
{
    Json result{{name, std::move(value)}};
    result.update(object);
    return result;
}

}

/// An algorithm while its step is executed.
struct PlanRun::StepRun
{
    StepRun(PlanRun& plan, const Step& step)
        : run(plan.mSurroundings.algorithms, step.algorithm),
          inputs(run, plan.mPool,
                 [&plan](const StepOutput& source) {
                     return plan.mResults.at({source.step, source.port});
                 })
    {
    }

    AlgorithmRun run;
    RunInputs inputs;
    RunMeasurements measurements;
};

PlanRun::PlanRun(MakePlan makePlan, Loop loop, const Surroundings& surroundings)
    : mMakePlan(std::move(makePlan)), mLoop(std::move(loop)), mSurroundings(surroundings),
      mPool(surroundings.loader), mOutputs(surroundings.observer, surroundings.abortFlag)
{
    findIterations();
}

void PlanRun::findIterations()
{
    switch (mLoop.kind)
    {
    case Loop::Kind::Once:
        mIterations.emplace_back();
        break;
    case Loop::Kind::EachStep:
        for (const double time : findSeries())
            mIterations.push_back({.time = time});
        break;
    case Loop::Kind::Sweep:
        for (const std::string& value : mLoop.values)
            mIterations.push_back({.variable = mLoop.variable, .value = value});
        break;
    }
    for (std::size_t i = 0; i < mIterations.size(); ++i)
    {
        mIterations[i].index = i;
        mIterations[i].count = mIterations.size();
    }
}

/// Finds the inputs that are time series, and returns the times that they share. References that depend
/// on the time themselves are none.
std::vector<double> PlanRun::findSeries()
{
    const Plan plan = mMakePlan({.time = 0.0});
    const Plan later = mMakePlan({.time = 1.0});
    std::vector<double> shared;
    std::string first;
    for (std::size_t i = 0; i < plan.steps.size(); ++i)
        for (std::size_t j = 0; j < plan.steps[i].assignments.size(); ++j)
        {
            const auto& reference = plan.steps[i].assignments[j].reference;
            if (!reference || reference->text != later.steps[i].assignments[j].reference->text)
                continue;
            const auto times = reference->seriesTimes(mSurroundings.loader);
            if (times.empty())
                continue;
            if (!first.empty() && times != shared)
                throw usage_error(reference->text + " and " + first +
                                  " have different time steps; a loop over time steps takes series "
                                  "with the same ones");
            first = reference->text;
            shared = times;
            mSeries.push_back({i, j});
        }
    if (shared.empty())
        throw usage_error("a loop over time steps needs a time series among the inputs");
    return shared;
}

Plan PlanRun::planOf(const Iteration& iteration) const
{
    Plan plan = mMakePlan(iteration);
    for (const auto& [step, index] : mSeries)
    {
        OptionAssignment& assignment = plan.steps.at(step).assignments.at(index);
        assignment.reference = assignment.reference->restrictedTo(*iteration.time);
        assignment.value = assignment.reference->text;
    }
    return plan;
}

void PlanRun::check(const Paths& others, const Paths& alsoRead) const
{
    const Plan plan = planOf(mIterations.front());
    // A single algorithm finds out by itself, before any time is lost.
    if (plan.steps.size() > 1)
        for (const Step& step : plan.steps)
            atPlace(placeOf({}, step),
                    [&] {
                        requireInputs(step, AlgorithmRun(mSurroundings.algorithms, step.algorithm));
                    });
    checkNumberPlaces(plan.outputs, mLoop);

    Paths destinations;
    std::ranges::transform(plan.outputs, std::back_inserter(destinations),
                           [&](const OutputRequest& request)
                           { return request.fileFor(mIterations.front()); });
    std::ranges::copy(others, std::back_inserter(destinations));
    Paths inputs = inputFilesOfAll();
    std::ranges::copy(alsoRead, std::back_inserter(inputs));
    checkDestinations(destinations, inputs);
    if (mLoop.isOnce())
        return;
    destinations = outputFilesOfAll();
    std::ranges::copy(others, std::back_inserter(destinations));
    checkDistinct(destinations, inputs);
}

/// The files that any iteration reads, once each.
PlanRun::Paths PlanRun::inputFilesOfAll() const
{
    Paths files;
    std::set<std::string> seen;
    for (const Iteration& iteration : mIterations)
        for (const Step& step : mMakePlan(iteration).steps)
            for (const OptionAssignment& assignment : step.assignments)
                if (assignment.reference && seen.insert(assignment.reference->text).second)
                    std::ranges::move(assignment.reference->files(mSurroundings.loader),
                                      std::back_inserter(files));
    return files;
}

/// The files that the iterations write. One to which several add is named once.
PlanRun::Paths PlanRun::outputFilesOfAll() const
{
    Paths files;
    std::set<std::pair<std::size_t, std::filesystem::path>> growing;
    for (const Iteration& iteration : mIterations)
    {
        const Plan plan = mMakePlan(iteration);
        for (std::size_t i = 0; i < plan.outputs.size(); ++i)
            if (const auto file = plan.outputs[i].fileFor(iteration);
                hasNumberPlace(plan.outputs[i].file) || growing.emplace(i, file).second)
                files.push_back(file);
    }
    return files;
}

bool PlanRun::printsData() const
{
    return std::ranges::any_of(planOf(mIterations.front()).outputs, [](const OutputRequest& request)
                               { return io::isStandardOutput(request.file); });
}

void PlanRun::execute()
{
    if (!mLoop.isOnce())
        survey();
    for (const Iteration& iteration : mIterations)
    {
        if (!mLoop.isOnce())
            mSurroundings.observer.iterationStarted(iteration);
        mReports.push_back(executeIteration(iteration));
        if (!mLoop.isOnce())
            mOutputs.publishFinished();
    }
    mFiles = mOutputs.finish();
}

Json PlanRun::report() const
{
    return mLoop.isOnce() ? mReports.front() : Json(mReports);
}

void PlanRun::survey()
{
    const auto steps = LoopSurvey::stepsToSurvey(planOf(mIterations.front()));
    if (steps.empty())
        return;
    for (const Iteration& iteration : mIterations)
        surveyIteration(iteration, steps);
}

void PlanRun::surveyIteration(const Iteration& iteration, const std::set<std::size_t>& steps)
{
    const Plan plan = planOf(iteration);
    for (const std::size_t index : steps)
    {
        const Step& step = plan.steps[index];
        StepRun current(*this, step);
        atPlace(placeOf(iteration, step),
                [&]
                {
                    current.inputs.apply(step, ValueRange{});
                    if (LoopSurvey::needsRange(step))
                        if (const auto norms = current.inputs.shownNorms(step))
                            mSurvey.addNorms(index, *norms);
                    executeInAdvance(current.run, mSurroundings.observer, mSurroundings.abortFlag);
                });
        if (LoopSurvey::needsSuggestions(step))
            mSurvey.addSuggestions(index, current.run.suggestions());
        keepResults(current.run, plan, index);
    }
    releaseUnused(plan, plan.steps.size());
}

Json PlanRun::executeIteration(const Iteration& iteration)
{
    const Plan plan = planOf(iteration);
    Json reports = Json::array();
    for (std::size_t index = 0; index < plan.steps.size(); ++index)
    {
        const Step& step = plan.steps[index];
        StepRun current(*this, step);
        atPlace(placeOf(iteration, step),
                [&]
                {
                    load(current, plan, index, mSurvey.norms(index));
                    run(current, plan, index);
                    timed(current.measurements.seconds.write,
                          [&]
                          {
                              const OutputFiles::Context context{
                                  current.inputs.objects(),
                                  iteration.time ? iteration.time
                                                 : current.inputs.timeOfSeries(step)};
                              for (const OutputRequest* const request : requestsFor(index, plan))
                                  current.measurements.outputs.push_back(
                                      mOutputs.write(*request, current.run, context, iteration));
                          });
                });
        const Json report = reportOn(current.run, step, plan, current.measurements);
        reports.push_back(step.id.empty() ? report : withFirst("id", step.id, report));
        keepResults(current.run, plan, index);
        releaseUnused(plan, index + 1);
    }
    Json report = plan.steps.size() == 1 && plan.steps.front().id.empty()
                      ? reports.front()
                      : Json{{"formatVersion", reportFormatVersion}, {"steps", std::move(reports)}};
    if (iteration.time)
        return withFirst("time", *iteration.time, report);
    if (!iteration.variable.empty())
        return withFirst("variables", {{iteration.variable, iteration.value}}, report);
    return report;
}

void PlanRun::load(StepRun& step, const Plan& plan, std::size_t index,
                   const std::optional<ValueRange>& range)
{
    timed(step.measurements.seconds.read, [&] { step.inputs.apply(plan.steps[index], range); });
    mSurroundings.observer.inputsLoaded();
    std::vector<OutputRequest> requests;
    for (const OutputRequest* const request : requestsFor(index, plan))
        requests.push_back(*request);
    checkFormats(requests, step.inputs.objects(), mLoop);
}

/// Gives the automatic options the suggested values. Without a suggestion an option stays at its
/// default.
void PlanRun::setSuggested(StepRun& current, const Step& step,
                           const std::map<std::string, std::string>& suggestions)
{
    for (const OptionAssignment& assignment : step.assignments)
    {
        if (!assignment.isAutomatic)
            continue;
        if (const auto value = suggestions.find(assignment.option); value != suggestions.end())
            current.run.setText(assignment.option, value->second);
        else
            mSurroundings.observer.hinted("no value is suggested for \"" + assignment.option +
                                          "\", which stays at its default");
    }
}

void PlanRun::run(StepRun& current, const Plan& plan, std::size_t index)
{
    const Step& step = plan.steps[index];
    const auto requests = requestsFor(index, plan);
    timed(current.measurements.seconds.execute,
          [&]
          {
              if (LoopSurvey::needsSuggestions(step))
              {
                  if (mLoop.isOnce())
                      executeInAdvance(current.run, mSurroundings.observer,
                                       mSurroundings.abortFlag);
                  setSuggested(current, step,
                               mLoop.isOnce() ? current.run.suggestions()
                                              : mSurvey.suggestions(index));
              }
              executeStep(current.run, requests, mSurroundings.observer, mSurroundings.abortFlag);
          });
    requireResults(current.run, index, plan, mSurroundings.observer);
}

/// Keeps the results that later steps take.
void PlanRun::keepResults(const AlgorithmRun& run, const Plan& plan, std::size_t index)
{
    for (std::size_t later = index + 1; later < plan.steps.size(); ++later)
        for (const OptionAssignment& assignment : plan.steps[later].assignments)
            if (assignment.source && assignment.source->step == index)
                mResults[{index, assignment.source->port}] = run.result(assignment.source->port);
}

/// Releases what neither the steps from `next` on nor the next iteration will take.
void PlanRun::releaseUnused(const Plan& plan, std::size_t next)
{
    std::set<std::pair<std::size_t, std::string>> results;
    std::set<std::string> texts;
    for (std::size_t i = 0; i < plan.steps.size(); ++i)
        for (std::size_t j = 0; j < plan.steps[i].assignments.size(); ++j)
        {
            const OptionAssignment& assignment = plan.steps[i].assignments[j];
            const bool isOfSeries =
                std::ranges::any_of(mSeries, [&](const SeriesPlace& place)
                                    { return place.step == i && place.assignment == j; });
            if (assignment.source && i >= next)
                results.emplace(assignment.source->step, assignment.source->port);
            if (assignment.reference && (i >= next || (!mLoop.isOnce() && !isOfSeries)))
                texts.insert(assignment.reference->text);
        }
    std::erase_if(mResults, [&](const auto& entry) { return !results.contains(entry.first); });
    mPool.keepOnly(texts);
}

/// Says in messages where something went wrong: "time 0.5: step "mean": "; empty for the only step
/// outside of a loop.
std::string PlanRun::placeOf(const Iteration& iteration, const Step& step) const
{
    const std::string name = iteration.name();
    return (name.empty() ? "" : name + ": ") +
           (step.id.empty() ? "" : "step \"" + step.id + "\": ");
}

}
