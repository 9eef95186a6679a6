#pragma once

#include <tavrin/pipeline/LoopSurvey.hpp>
#include <tavrin/pipeline/OutputFiles.hpp>
#include <tavrin/pipeline/PlanObserver.hpp>
#include <tavrin/pipeline/RunInputs.hpp>

namespace tavrin::pipeline
{

/// Executes plans, once or in a loop. Results go from step to step in memory, and what no later step
/// needs is released. Every front end runs algorithms through this class.
///
///     PlanRun run([&](const Iteration&) { return plan; }, {}, surroundings);
///     run.check();
///     run.execute();
///     for (const auto& file : run.files())
///         file->publish();
class TAVRIN_API PlanRun
{
public:
    /// Makes the plan of an iteration. All plans have the same steps and outputs.
    using MakePlan = std::function<Plan(const Iteration& iteration)>;

    using Paths = std::vector<std::filesystem::path>;

    /// What the execution works with. All of it must outlive the run.
    struct Surroundings
    {
        const RegistrationService<AlgorithmFactory>& algorithms;
        io::Loader& loader;
        PlanObserver& observer;
        const volatile bool& abortFlag;
    };

    /// Finds the iterations. Throws `usage_error` for a loop over time steps whose inputs have none or
    /// have different ones, and what `makePlan` and `io::Loader::timesOf` throw.
    PlanRun(MakePlan makePlan, Loop loop, const Surroundings& surroundings);

    const std::vector<Iteration>& iterations() const { return mIterations; }

    /// The plan of an iteration, with inputs restricted to its time.
    Plan planOf(const Iteration& iteration) const;

    /// Checks before anything is read that required inputs are given, and that the output files of all
    /// iterations and the `others` can be written without replacing each other, an input or a file
    /// that is `alsoRead`. Throws `usage_error` and `FileError`.
    void check(const Paths& others = {}, const Paths& alsoRead = {}) const;

    /// Whether an output is written to standard output.
    bool printsData() const;

    /// Executes all iterations. The files of a loop that belong to one iteration appear when it ends,
    /// so that those of finished iterations stay if a later one fails. Throws what algorithms,
    /// reading and writing throw; the message says which iteration and which of several steps it is
    /// about. Throws `Aborted` after an interrupt.
    void execute();

    /// The files that lack only their names.
    io::PendingFiles& files() { return mFiles; }

    /// The report on a single step, or an object with a list of reports on several; in a loop a list
    /// of such objects, one for each iteration.
    Json report() const;

private:
    struct StepRun;

    /// The place of an assignment whose reference names a whole time series.
    struct SeriesPlace
    {
        std::size_t step;
        std::size_t assignment;
    };

    void findIterations();
    std::vector<double> findSeries();
    Paths inputFilesOfAll() const;
    Paths outputFilesOfAll() const;
    void survey();
    void surveyIteration(const Iteration& iteration, const std::set<std::size_t>& steps);
    Json executeIteration(const Iteration& iteration);
    void load(StepRun& step, const Plan& plan, std::size_t index,
              const std::optional<ValueRange>& range);
    void setSuggested(StepRun& current, const Step& step,
                      const std::map<std::string, std::string>& suggestions);
    void run(StepRun& current, const Plan& plan, std::size_t index);
    void keepResults(const AlgorithmRun& run, const Plan& plan, std::size_t index);
    void releaseUnused(const Plan& plan, std::size_t next);
    std::string placeOf(const Iteration& iteration, const Step& step) const;

    MakePlan mMakePlan;
    Loop mLoop;
    Surroundings mSurroundings;
    std::vector<SeriesPlace> mSeries;
    std::vector<Iteration> mIterations;
    LoopSurvey mSurvey;
    ObjectPool mPool;
    /// By step and port: results that later steps of the iteration take.
    std::map<std::pair<std::size_t, std::string>, RunInputs::Object> mResults;
    OutputFiles mOutputs;
    io::PendingFiles mFiles;
    std::vector<Json> mReports;
};

}
