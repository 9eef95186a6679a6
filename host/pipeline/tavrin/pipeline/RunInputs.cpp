#include <tavrin/pipeline/RunInputs.hpp>

#include <tavrin/pipeline/Thinning.hpp>

#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

/// Replaces the functions by ones with at most `maximum` values.
void thin(DataObjectBundle::Members& objects, std::size_t maximum)
{
    for (auto& object : objects)
        if (auto function = std::dynamic_pointer_cast<const FunctionBase>(object))
            object = thinned(function, maximum);
}

}

void RunInputs::apply(const Step& step, const std::optional<ValueRange>& range)
{
    const ShownNorms shown{.range = range, .time = shownTime(step)};
    connectData(step, loadData(step, shown));
    for (const OptionAssignment& assignment : step.assignments)
        if (assignment.isDirect)
            mRun.setDirectly(assignment.option, assignment.value);
        else if (!assignment.isAutomatic && !takesData(mRun.input(assignment.option)))
            mRun.setText(assignment.option, assignment.value);
}

std::optional<ValueRange> RunInputs::shownNorms(const Step& step) const
{
    return normsOf(mObjects, shownTime(step));
}

std::optional<double> RunInputs::timeOfSeries(const Step& step) const
{
    for (const Object& object : mObjects)
    {
        const auto* const function = dynamic_cast<const FunctionBase*>(object.get());
        if (function == nullptr || function->numTimeSteps() < 2)
            continue;
        const auto& times = function->timeSteps();
        const double time = shownTime(step).value_or(times.front());
        return time >= times.front() && time <= times.back() ? time : times.front();
    }
    return std::nullopt;
}

/// The value of the number option "Time" if there is one: by convention, an algorithm with such an
/// option works on the values of one time.
std::optional<double> RunInputs::shownTime(const Step& step) const
{
    constexpr const char* name = "Time";
    const auto options = mRun.describe().options;
    const auto option = std::ranges::find(options, name, &AlgorithmDescription::Option::name);
    if (option == options.end() || option->kind != InputKind::Number)
        return std::nullopt;
    std::string text = option->value;
    for (const OptionAssignment& assignment : step.assignments)
        if (assignment.option == name && !assignment.isAutomatic)
            text = assignment.value;
    try
    {
        return lexicalCast<double>(text);
    }
    catch (const bad_lexical_cast&)
    {
        // Setting the option will say what is wrong with the text.
        return std::nullopt;
    }
}

/// The objects of each assignment. What depends on other objects is made last.
std::vector<RunInputs::Members> RunInputs::loadData(const Step& step, const ShownNorms& shown)
{
    const auto& assignments = step.assignments;
    std::vector<Members> loaded(assignments.size());
    for (const bool dependsOnOthers : {false, true})
        for (std::size_t i = 0; i < assignments.size(); ++i)
        {
            const auto& reference = assignments[i].reference;
            if ((reference && reference->dependsOnOthers()) != dependsOnOthers)
                continue;
            loaded[i] = objectsOf(assignments[i], shown);
            mObjects.insert(mObjects.end(), loaded[i].begin(), loaded[i].end());
            if (step.maximumArrows)
                thin(loaded[i], *step.maximumArrows);
        }
    return loaded;
}

RunInputs::Members RunInputs::objectsOf(const OptionAssignment& assignment, const ShownNorms& shown)
{
    if (assignment.source)
        return {mFindResult(*assignment.source)};
    if (!assignment.reference)
        return {};
    return mPool.make(*assignment.reference, mRun.input(assignment.option), mObjects, shown);
}

/// Connects every data option once, in the order in which the options are first given.
void RunInputs::connectData(const Step& step, const std::vector<Members>& loaded)
{
    using Connection = std::pair<std::string, Members>;
    std::vector<Connection> connections;
    for (std::size_t i = 0; i < step.assignments.size(); ++i)
    {
        const OptionAssignment& assignment = step.assignments[i];
        if (assignment.isDirect || !takesData(mRun.input(assignment.option)))
            continue;
        auto connection = std::ranges::find(connections, assignment.option, &Connection::first);
        if (connection == connections.end())
            connection = connections.insert(connection, {assignment.option, {}});
        if (assignment.value.empty() && !assignment.source)
            connection->second.clear();
        std::ranges::copy(loaded[i], std::back_inserter(connection->second));
    }
    for (const auto& [option, members] : connections)
        connect(option, members);
}

void RunInputs::connect(const std::string& option, const Members& members)
{
    if (members.empty())
        mRun.connect(option, nullptr);
    else if (mRun.input(option).kind() == InputKind::Bundle)
        mRun.connect(option, std::make_shared<DataObjectBundle>(members));
    else
        mRun.connect(option, members.front());
}

}
