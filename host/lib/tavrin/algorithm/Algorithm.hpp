#pragma once

#include <tavrin/algorithm/Options.hpp>
#include <tavrin/algorithm/Outputs.hpp>

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <map>

namespace tavrin
{

/// Watches the progress of long work.
class TAVRIN_API ProgressObserver
{
public:
    /// A report of work that will count `counter` up to `total`. The counter is read at leisure
    /// until `closed`. `canAbort` says whether the work looks at the abort flag.
    virtual void opened(const std::string& title, unsigned long total,
                        const volatile unsigned long& counter, bool canAbort) = 0;
    virtual void closed() = 0;

    virtual ~ProgressObserver() = default;
};

/// Told of a result before the work for it: the values will be on `domain`, of `numTimeSteps` steps.
/// What it throws ends the run.
using ResultListener = std::function<void(const std::string& portName, const Domain& domain,
                                          std::size_t numTimeSteps)>;

/// What a run has counted, for reports: numbers by group and name, such as "samples": "total".
using Statistics = std::map<std::string, std::map<std::string, std::uint64_t>>;

/// Base of all algorithms. An instance may be executed any number of times.
class TAVRIN_API Algorithm
{
public:
    /// What the host gives an algorithm at construction; all of it outlives the algorithm.
    struct InitData
    {
        std::ostream& infoLog;
        std::ostream& debugLog;
        DataOutputs::Control& dataOutputs;
        VisOutputs::Control& visOutputs;
        Statistics& statistics;
        /// May be null.
        ProgressObserver*& progressObserver;
        /// May be empty.
        const ResultListener& resultListener;
    };

    class Progress;

    explicit Algorithm(InitData& initData) : mHost(initData) {}
    Algorithm(const Algorithm&) = delete;
    Algorithm& operator=(const Algorithm&) = delete;
    virtual ~Algorithm() = default;

    /// Runs with the current options. Long work ends soon after `abortFlag`, which another thread
    /// may set, reads true. An exception that leaves it ends the run.
    virtual void execute(const Options& options, const volatile bool& abortFlag) = 0;

protected:
    /// Reports for the user; every message ends with a line end.
    std::ostream& infoLog() const { return mHost.infoLog; }
    /// Diagnostics.
    std::ostream& debugLog() const { return mHost.debugLog; }

    /// Reports a number. Only of what was delivered: a run that publishes nothing has none.
    void setStatistic(const std::string& group, const std::string& name, std::uint64_t count)
    {
        mHost.statistics[group][name] = count;
    }

    InitData& host() const { return mHost; }

private:
    InitData& mHost;
};

/// A progress report: open while the object lives. The work adds to the counter, which the object
/// converts to.
class TAVRIN_API Algorithm::Progress
{
public:
    Progress(const Algorithm& algorithm, const std::string& title, unsigned long total,
             bool canAbort = true);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    operator unsigned long volatile&() { return mCounter; }

    /// Adds to the counter; may be called from several threads.
    void advance(unsigned long count = 1)
    {
        std::atomic_ref(const_cast<unsigned long&>(mCounter))
            .fetch_add(count, std::memory_order_relaxed);
    }

private:
    ProgressObserver* mObserver;
    // Alone in its cache line: several threads may write it.
    alignas(64) volatile unsigned long mCounter = 0;
};

/// An algorithm that publishes data objects.
class TAVRIN_API DataAlgorithm : public Algorithm
{
public:
    using DataOutputs = tavrin::DataOutputs;
    using VisOutputs = tavrin::VisOutputs;

    using Algorithm::Algorithm;

protected:
    /// Says what a port will carry, before long work for it. A host that has no use for such a
    /// result ends the run here by an exception.
    void announceResult(const std::string& portName, const Domain& domain,
                        std::size_t numTimeSteps) const;

    /// Publishes an object on a port. Throws `logic_error` for an unknown port or a wrong class.
    void setResult(const std::string& portName, std::shared_ptr<const DataObject> object);

    /// Withdraws what was published on a port.
    void clearResult(const std::string& portName);
};

/// An algorithm that shows graphics or writes reports.
class TAVRIN_API VisAlgorithm : public Algorithm
{
public:
    using DataOutputs = tavrin::DataOutputs;
    using VisOutputs = tavrin::VisOutputs;

    using Algorithm::Algorithm;

protected:
    /// Shows a drawable on an output; an empty pointer clears it.
    void setGraphics(const std::string& outputName, std::shared_ptr<graphics::Drawable> drawable);
};

/// An algorithm that reacts to the user's pointing device.
class TAVRIN_API InteractionAlgorithm : public VisAlgorithm
{
public:
    class TAVRIN_API Interactions
    {
    public:
        virtual ~Interactions() = default;
    };

    using VisAlgorithm::VisAlgorithm;
};

}
