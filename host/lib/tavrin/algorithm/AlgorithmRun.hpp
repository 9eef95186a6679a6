#pragma once

#include <tavrin/algorithm/AlgorithmFactory.hpp>
#include <tavrin/algorithm/RunLog.hpp>
#include <tavrin/plugin/RegistrationService.hpp>

#include <map>

namespace tavrin
{

/// The declaration of an algorithm and the current values of its options, as data.
struct AlgorithmDescription
{
    struct Option
    {
        InputKind kind;
        std::string name;
        std::string help;
        /// The name of the group that the option belongs to; empty outside of groups.
        std::string group;
        /// Whether a gap separates it from the option before.
        bool afterSeparator = false;
        bool isRequired = false;
        bool isVisible = true;
        /// As texts; empty for data. The text of a label is its value.
        std::string defaultValue;
        std::string value;
        /// The texts that a choice offers.
        std::vector<std::string> choices;
        /// What a person calls the data objects that are accepted, as themselves or as members of a
        /// bundle.
        std::vector<std::string> types;
        /// Whether a data object is connected.
        bool isConnected = false;
    };

    struct Output
    {
        std::string name;
        /// Graphics, or else data.
        bool isGraphics = false;
        /// The classes of data object that it carries.
        std::vector<std::string> types;
    };

    std::string name;
    std::string description;
    AlgorithmFactory::AlgorithmType type = AlgorithmFactory::Data;
    std::vector<Option> options;
    std::vector<Output> outputs;
};

/// Follows the execution of an algorithm as it happens, on the thread that executes it. Every
/// function does nothing unless it is overridden.
class TAVRIN_API RunObserver : public ProgressObserver
{
public:
    void opened(const ProgressReport&) override {}
    void closed(const ProgressReport&) override {}

    /// A complete line of the information log or the debug log, without its end.
    virtual void infoLine(const std::string&) {}
    virtual void debugLine(const std::string&) {}

    /// A hint of the algorithm, without a line end.
    virtual void hinted(const std::string&) {}

    /// The algorithm is about to work on a result whose values will be on `domain`, of
    /// `numTimeSteps` steps. An exception ends the run.
    virtual void announced(const std::string& /*port*/, const Domain& /*domain*/,
                           std::size_t /*numTimeSteps*/)
    {
    }
};

/// Runs one algorithm for a front end: makes its options, outputs and instance, sets its inputs,
/// executes it and collects what it delivers. May be executed any number of times.
///
///     AlgorithmRun run(registry, "Field/Info");
///     run.connect("Field", velocity);
///     run.setText("Compute median", "true");
///     run.execute(abortFlag);
///     std::cout << run.infoLog();
class TAVRIN_API AlgorithmRun : private AlgorithmListener
{
public:
    /// Throws `usage_error` for an unknown algorithm, with the nearest name where one is near.
    AlgorithmRun(const RegistrationService<AlgorithmFactory>& registry,
                 const std::string& algorithmName);
    AlgorithmRun(const AlgorithmRun&) = delete;
    AlgorithmRun& operator=(const AlgorithmRun&) = delete;
    ~AlgorithmRun() override;

    /// Connects a data object to an option, or disconnects with null. A bundle option takes a
    /// bundle, or one object, which becomes a bundle of one. Throws `usage_error` for an unknown
    /// option, one that takes no data, or an object that it does not accept.
    void connect(const std::string& option, std::shared_ptr<const DataObject> object);

    /// Sets an option from a text, through its validator. Throws `usage_error` for an unknown
    /// option, one that takes no text, or a text that it does not accept.
    void setText(const std::string& option, const std::string& text);

    /// Checks whether an option takes a text, as far as that can be told without the other options.
    /// Throws as `setText`.
    void checkText(const std::string& option, const std::string& text) const;

    /// Sets an option from a text without asking its validator, for values that a choice does not
    /// offer. Throws as `setText`.
    void setDirectly(const std::string& option, const std::string& text);

    /// The input behind an option. Throws `usage_error` for an unknown one.
    const InputBase& input(const std::string& option) const;

    /// Executes the algorithm. Logs, hints and reports of an earlier execution are dropped first.
    /// `observer`, which may be null, follows the execution and is not used afterwards. Exceptions
    /// pass through.
    void execute(const volatile bool& abortFlag, RunObserver* observer = nullptr);

    const std::string& infoLog() const { return mInfoLog.text(); }
    const std::string& debugLog() const { return mDebugLog.text(); }
    const std::vector<std::string>& hints() const { return mHints; }

    /// The values that the algorithm suggests, by option.
    const std::map<std::string, std::string>& suggestions() const { return mSuggestions; }

    /// What the algorithm reported, in the order of the first report of each name.
    const ReportValue::Members& results() const { return mResults; }

    /// What was published on an output, or null. Throws `usage_error` for an unknown output.
    std::shared_ptr<const DataObject> result(const std::string& port) const;
    std::shared_ptr<graphics::Drawable> graphics(const std::string& output) const;

    AlgorithmDescription describe() const;

private:
    void hinted(const std::string& text) override;
    void suggested(const std::string& option, const std::string& value) override;
    void reported(const std::string& name, ReportValue value) override;
    void announced(const std::string& portName, const Domain& domain,
                   std::size_t numTimeSteps) override;

    InputValueBase& valueInput(const std::string& option) const;
    std::shared_ptr<InputBase> findInput(const std::string& option) const;

    std::shared_ptr<AlgorithmFactory> mFactory;
    /// Never null; one that does nothing between executions.
    RunObserver* mObserver;
    RunObserver mNobody;
    RunLog mInfoLog{[this](const std::string& line) { mObserver->infoLine(line); }};
    RunLog mDebugLog{[this](const std::string& line) { mObserver->debugLine(line); }};
    std::vector<std::string> mHints;
    std::map<std::string, std::string> mSuggestions;
    ReportValue::Members mResults;
    DataOutputs::Control mDataOutputs;
    VisOutputs::Control mVisOutputs;
    ProgressReports mProgressReports;
    Algorithm::InitData mInitData{mInfoLog.stream(), mDebugLog.stream(), mDataOutputs,
                                  mVisOutputs,       mProgressReports,   *this};
    Options::Control mControl;
    std::unique_ptr<Options> mOptions;
    std::unique_ptr<Algorithm> mAlgorithm;
};

}
