#pragma once

#include <tavrin/algorithm/AlgorithmFactory.hpp>
#include <tavrin/plugin/RegistrationService.hpp>

#include <sstream>

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
        /// The group that the option stands in; empty outside of groups.
        std::string group;
        /// Whether a gap separates it from the option before.
        bool afterSeparator = false;
        bool isRequired = false;
        bool isVisible = true;
        /// As texts; empty for data. The text of a label is its value.
        std::string defaultValue;
        std::string value;
        /// Of a choice.
        std::vector<std::string> choices;
        /// The classes of data object that are accepted.
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

/// Runs one algorithm for a front end: makes its options, outputs and instance, sets its inputs,
/// executes it and collects what it delivers. May be executed any number of times.
class TAVRIN_API AlgorithmRun
{
public:
    /// Throws `usage_error` for an unknown algorithm, with the nearest name where one is near.
    AlgorithmRun(const RegistrationService<AlgorithmFactory>& registry,
                 const std::string& algorithmName);
    AlgorithmRun(const AlgorithmRun&) = delete;
    AlgorithmRun& operator=(const AlgorithmRun&) = delete;
    ~AlgorithmRun();

    /// Connects a data object to an option, or disconnects with null. A bundle option takes a
    /// bundle, or one object, which becomes a bundle of one. Throws `usage_error` for an unknown
    /// option, one that takes no data, or an object that it does not accept.
    void connect(const std::string& option, std::shared_ptr<const DataObject> object);

    /// Sets an option from a text, through its validator. Throws `usage_error` for an unknown
    /// option, one that takes no text, or a text that it does not accept.
    void setText(const std::string& option, const std::string& text);

    /// The same past the validator, for values that a choice does not offer.
    void setDirectly(const std::string& option, const std::string& text);

    /// The input behind an option. Throws `usage_error` for an unknown one.
    const InputBase& input(const std::string& option) const;

    /// Who hears of results before the work for them, from algorithms that announce them.
    void setResultListener(ResultListener listener) { mResultListener = std::move(listener); }

    /// Executes the algorithm; the logs and statistics of an earlier execution are dropped before.
    /// Exceptions pass through.
    void execute(const volatile bool& abortFlag, ProgressObserver* observer = nullptr);

    std::string infoLog() const { return mInfoLog.str(); }
    std::string debugLog() const { return mDebugLog.str(); }
    const Statistics& statistics() const { return mStatistics; }

    /// What was published on an output, or null. Throws `usage_error` for an unknown output.
    std::shared_ptr<const DataObject> result(const std::string& port) const;
    std::shared_ptr<graphics::Drawable> graphics(const std::string& output) const;

    AlgorithmDescription describe() const;

private:
    void setFrom(const std::string& option, const std::string& text,
                 void (InputValueBase::*set)(const std::string&));
    std::shared_ptr<InputBase> findInput(const std::string& option) const;

    std::shared_ptr<AlgorithmFactory> mFactory;
    std::ostringstream mInfoLog;
    std::ostringstream mDebugLog;
    DataOutputs::Control mDataOutputs;
    VisOutputs::Control mVisOutputs;
    Statistics mStatistics;
    ProgressObserver* mObserver = nullptr;
    ResultListener mResultListener;
    Algorithm::InitData mInitData{mInfoLog,    mDebugLog, mDataOutputs,   mVisOutputs,
                                  mStatistics, mObserver, mResultListener};
    Options::Control mControl;
    std::unique_ptr<Options> mOptions;
    std::unique_ptr<Algorithm> mAlgorithm;
};

}
