#pragma once

#include <tavrin/algorithm/Options.hpp>
#include <tavrin/algorithm/Outputs.hpp>
#include <tavrin/algorithm/Progress.hpp>
#include <tavrin/algorithm/ReportValue.hpp>

#include <iosfwd>

namespace tavrin
{

class Domain;

/// What a host hears from an algorithm beside its results and logs.
class TAVRIN_API AlgorithmListener
{
public:
    virtual void hinted(const std::string& text) = 0;
    virtual void suggested(const std::string& option, const std::string& value) = 0;
    virtual void reported(const std::string& name, ReportValue value) = 0;

    /// Before long work for a result whose values will be on `domain`, of `numTimeSteps` steps. An
    /// exception ends the run.
    virtual void announced(const std::string& portName, const Domain& domain,
                           std::size_t numTimeSteps) = 0;

    virtual ~AlgorithmListener() = default;
};

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
        ProgressReports& progressReports;
        AlgorithmListener& listener;
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
    /// The report for the user in prose; every message ends with a line end.
    std::ostream& infoLog() const { return mHost.infoLog; }

    /// Diagnostics; every message ends with a line end.
    std::ostream& debugLog() const { return mHost.debugLog; }

    /// Advice to the user, one line without its end: what may be wrong with the input, or which
    /// option would serve better.
    void hint(const std::string& text) const { mHost.listener.hinted(text); }

    /// A better value for an option, as a text that the option takes. Front ends offer it, or use it
    /// where the user left the choice to the algorithm.
    void suggest(const std::string& option, const std::string& value) const
    {
        mHost.listener.suggested(option, value);
    }

    /// A result for programs, at full precision. A second report of one name replaces the first.
    void report(const std::string& name, ReportValue value) const
    {
        mHost.listener.reported(name, std::move(value));
    }

    InitData& host() const { return mHost; }

private:
    InitData& mHost;
};

/// A progress report: open while the object lives, and at the longest to the end of the execution.
/// The work advances the counter, from any of its threads.
class TAVRIN_API Algorithm::Progress : public ProgressCounter
{
public:
    /// `total` is the count at the end of the work, 0 where it is not known; `canAbort` says whether
    /// the work checks the abort flag.
    Progress(const Algorithm& algorithm, const std::string& title, unsigned long total,
             bool canAbort = true);
    ~Progress();

private:
    ProgressReports& mReports;
    ProgressReport mReport;
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
