#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <tavrin/base/Suggestion.hpp>

#include <algorithm>

namespace tavrin
{

namespace
{

std::shared_ptr<AlgorithmFactory> findFactory(const RegistrationService<AlgorithmFactory>& registry,
                                              const std::string& name)
{
    auto factory = registry.find(name);
    if (factory != nullptr)
        return factory;
    std::vector<std::string> names;
    for (const auto& [known, unused] : registry.factories())
        names.push_back(known);
    std::ranges::sort(names);
    throw usage_error("unknown algorithm \"" + name + "\"" + suggestionFor(name, names));
}

/// Changes an option and lets a refusal name the option.
template<typename Change>
void refuseForOption(const std::string& option, const Change& change)
{
    try
    {
        change();
    }
    catch (const bad_lexical_cast& error)
    {
        throw usage_error("option \"" + option + "\": " + error.what());
    }
    catch (const usage_error& error)
    {
        throw usage_error("option \"" + option + "\": " + error.what());
    }
}

AlgorithmDescription::Option describeInput(const InputBase& input)
{
    AlgorithmDescription::Option option{.kind = input.kind(),
                                        .name = input.name(),
                                        .help = input.description(),
                                        .group = {},
                                        .isVisible = input.isVisible(),
                                        .defaultValue = {},
                                        .value = {},
                                        .choices = {},
                                        .types = {}};
    if (const auto* const value = dynamic_cast<const InputValueBase*>(&input))
    {
        option.defaultValue = value->defaultToString();
        option.value = value->toString();
    }
    if (const auto* const choices = dynamic_cast<const InputChoices*>(&input))
        option.choices = choices->choices();
    if (const auto* const label = dynamic_cast<const InputLabel*>(&input))
        option.value = label->text();
    if (const auto* const data = dynamic_cast<const InputDataObject*>(&input))
    {
        option.types = data->types().descriptions();
        option.isConnected = data->dataObject() != nullptr;
    }
    if (const auto* const bundle = dynamic_cast<const InputDataObjectBundle*>(&input))
    {
        option.types = bundle->memberTypes().descriptions();
        option.isConnected = bundle->bundle() != nullptr;
    }
    return option;
}

}

AlgorithmRun::AlgorithmRun(const RegistrationService<AlgorithmFactory>& registry,
                           const std::string& algorithmName)
    : mFactory(findFactory(registry, algorithmName)), mObserver(&mNobody),
      mOptions(mFactory->makeOptions(mControl))
{
    mFactory->declareDataOutputs(mDataOutputs);
    mFactory->declareVisOutputs(mVisOutputs);
    mAlgorithm = mFactory->makeAlgorithm(mInitData);
}

AlgorithmRun::~AlgorithmRun() = default;

std::shared_ptr<InputBase> AlgorithmRun::findInput(const std::string& option) const
{
    if (auto input = mControl.getInput(option))
        return input;
    std::vector<std::string> names;
    for (const auto& known : describe().options)
        names.push_back(known.name);
    throw usage_error("\"" + mFactory->getName() + "\" has no option \"" + option + "\"" +
                      suggestionFor(option, names));
}

const InputBase& AlgorithmRun::input(const std::string& option) const
{
    return *findInput(option);
}

void AlgorithmRun::connect(const std::string& option, std::shared_ptr<const DataObject> object)
{
    const auto input = findInput(option);
    if (const auto data = std::dynamic_pointer_cast<InputDataObject>(input))
    {
        refuseForOption(option, [&] { data->setDataObject(object); });
        return;
    }
    const auto bundleInput = std::dynamic_pointer_cast<InputDataObjectBundle>(input);
    if (bundleInput == nullptr)
        throw usage_error("option \"" + option + "\" takes no data; it is a " +
                          std::string(nameOf(input->kind())) + " option");
    auto bundle = std::dynamic_pointer_cast<const DataObjectBundle>(object);
    if (bundle == nullptr && object != nullptr)
        bundle = std::make_shared<DataObjectBundle>(DataObjectBundle::Members{std::move(object)});
    refuseForOption(option, [&] { bundleInput->setBundle(bundle); });
}

void AlgorithmRun::setText(const std::string& option, const std::string& text)
{
    InputValueBase& input = valueInput(option);
    refuseForOption(option, [&] { input.fromString(text); });
}

void AlgorithmRun::checkText(const std::string& option, const std::string& text) const
{
    const InputValueBase& input = valueInput(option);
    refuseForOption(option, [&] { input.check(text); });
}

void AlgorithmRun::setDirectly(const std::string& option, const std::string& text)
{
    InputValueBase& input = valueInput(option);
    refuseForOption(option, [&] { input.fromStringUnchecked(text); });
}

InputValueBase& AlgorithmRun::valueInput(const std::string& option) const
{
    const auto input = findInput(option);
    auto* const value = dynamic_cast<InputValueBase*>(input.get());
    if (value == nullptr)
        throw usage_error("option \"" + option + "\" takes no text; it is a " +
                          std::string(nameOf(input->kind())) + " option");
    return *value;
}

void AlgorithmRun::execute(const volatile bool& abortFlag, RunObserver* observer)
{
    mInfoLog.restart();
    mDebugLog.restart();
    mHints.clear();
    mSuggestions.clear();
    mResults.clear();

    /// Lets the observer follow the execution, however that ends.
    class Observation
    {
    public:
        Observation(AlgorithmRun& run, RunObserver* observer) : mRun(run)
        {
            mRun.mObserver = observer != nullptr ? observer : &mRun.mNobody;
            mRun.mProgressReports.observeBy(mRun.mObserver);
        }
        Observation(const Observation&) = delete;
        Observation& operator=(const Observation&) = delete;
        ~Observation()
        {
            mRun.mProgressReports.observeBy(nullptr);
            mRun.mInfoLog.finishLine();
            mRun.mDebugLog.finishLine();
            mRun.mObserver = &mRun.mNobody;
        }

    private:
        AlgorithmRun& mRun;
    };
    const Observation observation(*this, observer);
    mAlgorithm->execute(*mOptions, abortFlag);
}

void AlgorithmRun::hinted(const std::string& text)
{
    mHints.push_back(text);
    mObserver->hinted(text);
}

void AlgorithmRun::suggested(const std::string& option, const std::string& value)
{
    static_cast<void>(findInput(option));
    mSuggestions.insert_or_assign(option, value);
}

void AlgorithmRun::reported(const std::string& name, ReportValue value)
{
    const auto earlier = std::ranges::find(mResults, name, &ReportMember::name);
    if (earlier != mResults.end())
        earlier->value = std::move(value);
    else
        mResults.push_back({name, std::move(value)});
}

void AlgorithmRun::announced(const std::string& portName, const Domain& domain,
                             std::size_t numTimeSteps)
{
    mObserver->announced(portName, domain, numTimeSteps);
}

std::shared_ptr<const DataObject> AlgorithmRun::result(const std::string& port) const
{
    std::vector<std::string> names;
    for (const auto& candidate : mDataOutputs.ports())
    {
        if (candidate.name == port)
            return candidate.result;
        names.push_back(candidate.name);
    }
    throw usage_error("\"" + mFactory->getName() + "\" has no data output \"" + port + "\"" +
                      suggestionFor(port, names));
}

std::shared_ptr<graphics::Drawable> AlgorithmRun::graphics(const std::string& output) const
{
    std::vector<std::string> names;
    for (const auto& candidate : mVisOutputs.outputs())
    {
        if (candidate.name == output)
            return candidate.drawable;
        names.push_back(candidate.name);
    }
    throw usage_error("\"" + mFactory->getName() + "\" has no graphics output \"" + output + "\"" +
                      suggestionFor(output, names));
}

AlgorithmDescription AlgorithmRun::describe() const
{
    AlgorithmDescription description{.name = mFactory->getName(),
                                     .description = mFactory->getDescription(),
                                     .type = mFactory->getType(),
                                     .options = {},
                                     .outputs = {}};
    std::string group;
    bool afterSeparator = false;
    for (const Options::Control::Item& item : mControl.items())
    {
        if (const auto* const input = std::get_if<std::shared_ptr<InputBase>>(&item))
        {
            auto& option = description.options.emplace_back(describeInput(**input));
            option.group = group;
            option.afterSeparator = std::exchange(afterSeparator, false);
            option.isRequired = mControl.isRequired(option.name);
        }
        else if (const auto* const started = std::get_if<Options::Control::Group>(&item))
            group = started->name;
        else
            afterSeparator = true;
    }
    for (const auto& port : mDataOutputs.ports())
        description.outputs.push_back({port.name, false, port.types.descriptions()});
    for (const auto& output : mVisOutputs.outputs())
        description.outputs.push_back({output.name, true, {}});
    return description;
}

}
