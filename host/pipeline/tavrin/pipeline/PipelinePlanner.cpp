#include <tavrin/pipeline/PipelinePlanner.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <tavrin/base/Suggestion.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

using Names = std::vector<std::string>;

/// Whether a text can only be meant as the name of data or a step.
bool isBareWord(const std::string& text)
{
    return text.find_first_of("./#?@") == std::string::npos;
}

/// Makes the plan of one iteration.
class PipelinePlanner
{
public:
    PipelinePlanner(const PipelineText& text, const Iteration& iteration)
        : mText(text), mIteration(iteration)
    {
        for (const PipelineText::StepText& step : mText.steps)
            mRuns.push_back(std::make_unique<AlgorithmRun>(mText.algorithms, step.algorithm));
    }

    Plan plan()
    {
        Plan plan;
        for (std::size_t i = 0; i < mText.steps.size(); ++i)
            plan.steps.push_back(step(i));
        const auto order = executionOrder(plan);
        for (const auto& [name, value] : mText.section("outputs").entriesOf("\"outputs\""))
            addOutput(name, value, plan);
        refuseLostResults(plan);
        return reordered(std::move(plan), order);
    }

private:
    /// The text of a node, with values in place of variables.
    std::string text(const YamlNode& node, const std::string& what) const
    {
        const std::string& source = node.textOf(what);
        std::string result;
        for (std::size_t i = 0; i < source.size(); ++i)
        {
            if (source[i] != '$')
                result += source[i];
            else if (source.compare(i, 2, "$$") == 0)
                result += source[++i];
            else if (source.compare(i, 2, "${") == 0)
            {
                const auto end = source.find('}', i);
                if (end == std::string::npos)
                    node.place.refuse("\"${\" without \"}\"");
                result += valueOf(source.substr(i + 2, end - i - 2), node.place);
                i = end;
            }
            else
                node.place.refuse("\"$\" begins a variable, as in ${name}; a dollar sign is $$");
        }
        return result;
    }

    std::string valueOf(const std::string& variable, const FilePlace& place) const
    {
        if (variable == PipelineText::timeVariable && mIteration.time)
            return shortestText(*mIteration.time);
        if (variable == mIteration.variable)
            return mIteration.value;
        const auto entry = mText.variables.find(variable);
        if (entry == mText.variables.end())
            place.refuse("unknown variable \"" + variable + "\"" +
                         suggestionFor(variable, mText.variableNames()));
        if (!entry->second)
            place.refuse("the variable \"" + variable + "\" has no value; use --set " + variable +
                         "=VALUE");
        return *entry->second;
    }

    Step step(std::size_t index) const
    {
        const PipelineText::StepText& source = mText.steps[index];
        Step step{.id = source.id, .algorithm = source.algorithm, .assignments = {}};
        const Names names = optionNames(mRuns[index]->describe());
        if (source.options == nullptr)
            return step;
        for (const auto& [name, value] : source.options->entriesOf("the options of a step"))
        {
            name.requireAmong(names, "option");
            addAssignments(name.text, value, *mRuns[index], step);
        }
        return step;
    }

    void addAssignments(const std::string& option, const YamlNode& value, const AlgorithmRun& run,
                        Step& step) const
    {
        const std::string what = "the value of \"" + option + "\"";
        const InputKind kind = run.input(option).kind();
        if (value.kind == YamlNode::Kind::List && kind == InputKind::Bundle)
        {
            for (const YamlNode& member : value.items)
                step.assignments.push_back(data(option, member, run));
            return;
        }
        if (takesData(run.input(option)))
        {
            step.assignments.push_back(data(option, value, run));
            return;
        }
        const YamlNode* const unchecked = value.find("unchecked");
        if (value.kind == YamlNode::Kind::Map)
            value.requireKeys({"unchecked"}, what);
        const std::string given = text(unchecked != nullptr ? *unchecked : value, what);
        auto assignment =
            at(value.place,
               [&] { return OptionAssignment::make(option, given, unchecked != nullptr, run); });
        if (unchecked == nullptr && !assignment.isAutomatic)
            at(value.place, [&] { run.checkText(option, assignment.value); });
        step.assignments.push_back(std::move(assignment));
    }

    /// The assignment of the name of data, an output of a step, or a reference.
    OptionAssignment data(const std::string& option, const YamlNode& value,
                          const AlgorithmRun& run) const
    {
        const std::string given = text(value, "the value of \"" + option + "\"");
        if (const auto source = stepOutput(given, value.place))
            return {.option = option, .value = given, .source = source};
        const YamlNode* const named = mText.section("data").find(given);
        const std::string reference =
            named == nullptr ? given : text(*named, "the reference of \"" + given + "\"");
        return at(value.place,
                  [&]
                  {
                      if (named == nullptr && isBareWord(given) && !given.empty() &&
                          !isColorMap(given, run.input(option)))
                          refuseWord(given);
                      return OptionAssignment::make(option, reference, false, run);
                  });
    }

    static bool isColorMap(const std::string& given, const InputBase& input)
    {
        return std::ranges::any_of(
            kindsOf(input), [&](const DataKind* kind)
            { return std::ranges::find(kind->offers, given) != kind->offers.end(); });
    }

    [[noreturn]] void refuseWord(const std::string& given) const
    {
        Names names;
        for (const auto& [name, value] : mText.section("data").entries)
            names.push_back(name.text);
        for (std::size_t i = 0; i < mText.steps.size(); ++i)
            for (const auto& output : mRuns[i]->describe().outputs)
                names.push_back(mText.steps[i].id + "." + output.name);
        throw usage_error("no data and no output of a step is named \"" + given + "\"" +
                          suggestionFor(given, names));
    }

    /// What STEP.PORT names; nothing for a text that does not begin with the id of a step and a dot.
    std::optional<StepOutput> stepOutput(const std::string& text, const FilePlace& place) const
    {
        const auto dot = text.find('.');
        if (dot == std::string::npos)
            return std::nullopt;
        const auto step =
            std::ranges::find(mText.steps, text.substr(0, dot), &PipelineText::StepText::id);
        if (step == mText.steps.end())
            return std::nullopt;
        const auto index = static_cast<std::size_t>(step - mText.steps.begin());
        const auto output = outputOf(index, text.substr(dot + 1), place);
        if (output.isGraphics)
            place.refuse("\"" + text + "\" is graphics, which no option takes");
        return StepOutput{index, output.name};
    }

    AlgorithmDescription::Output outputOf(std::size_t step, const std::string& port,
                                          const FilePlace& place) const
    {
        const auto outputs = mRuns[step]->describe().outputs;
        const auto found = std::ranges::find(outputs, port, &AlgorithmDescription::Output::name);
        if (found != outputs.end())
            return *found;
        Names names;
        for (const auto& output : outputs)
            names.push_back(output.name);
        place.refuse("\"" + mText.steps[step].algorithm + "\" has no output \"" + port + "\"" +
                     suggestionFor(port, names));
    }

    /// The steps in an order in which each comes after those that it takes results of; otherwise the
    /// order of the file.
    std::vector<std::size_t> executionOrder(const Plan& plan) const
    {
        std::vector<std::size_t> order;
        std::vector<bool> isDone(plan.steps.size(), false);
        const auto isReady = [&](std::size_t i)
        {
            return !isDone[i] && std::ranges::all_of(plan.steps[i].assignments,
                                                     [&](const auto& assignment) {
                                                         return !assignment.source ||
                                                                isDone[assignment.source->step];
                                                     });
        };
        while (order.size() < plan.steps.size())
        {
            std::size_t next = 0;
            while (next < plan.steps.size() && !isReady(next))
                ++next;
            if (next == plan.steps.size())
                refuseCycle(isDone);
            isDone[next] = true;
            order.push_back(next);
        }
        return order;
    }

    [[noreturn]] void refuseCycle(const std::vector<bool>& isDone) const
    {
        Names names;
        for (std::size_t i = 0; i < isDone.size(); ++i)
            if (!isDone[i])
                names.push_back("\"" + mText.steps[i].id + "\"");
        const auto first = std::ranges::find(isDone, false) - isDone.begin();
        mText.steps[static_cast<std::size_t>(first)].place.refuse(
            "these steps take results of each other: " + joined(names, ", "));
    }

    static Plan reordered(Plan plan, const std::vector<std::size_t>& order)
    {
        std::vector<std::size_t> newIndex(order.size());
        std::vector<Step> steps;
        for (std::size_t i = 0; i < order.size(); ++i)
        {
            newIndex[order[i]] = i;
            steps.push_back(std::move(plan.steps[order[i]]));
        }
        for (Step& step : steps)
            for (OptionAssignment& assignment : step.assignments)
                if (assignment.source)
                    assignment.source->step = newIndex[assignment.source->step];
        for (OutputRequest& request : plan.outputs)
            request.step = newIndex[request.step];
        plan.steps = std::move(steps);
        return plan;
    }

    /// Refuses a step with outputs that are neither written nor taken by a step.
    void refuseLostResults(const Plan& plan) const
    {
        for (std::size_t i = 0; i < plan.steps.size(); ++i)
        {
            const bool isTaken = std::ranges::any_of(
                plan.steps,
                [&](const Step& step)
                {
                    return std::ranges::any_of(
                        step.assignments, [&](const auto& assignment)
                        { return assignment.source && assignment.source->step == i; });
                });
            const bool isWritten =
                std::ranges::find(plan.outputs, i, &OutputRequest::step) != plan.outputs.end();
            if (!isTaken && !isWritten && !mRuns[i]->describe().outputs.empty())
                mText.steps[i].place.refuse("the result of step \"" + plan.steps[i].id +
                                            "\" would be lost; no step takes it, and \"outputs\" "
                                            "does not name it");
        }
    }

    void addOutput(const YamlNode& name, const YamlNode& value, Plan& plan) const
    {
        const auto dot = name.text.find('.');
        const auto step =
            std::ranges::find(mText.steps, name.text.substr(0, dot), &PipelineText::StepText::id);
        if (dot == std::string::npos || step == mText.steps.end())
        {
            Names names;
            for (const PipelineText::StepText& known : mText.steps)
                names.push_back(known.id);
            name.place.refuse("\"" + name.text + "\" is not of the form STEP.OUTPUT" +
                              suggestionFor(name.text.substr(0, dot), names));
        }
        const auto index = static_cast<std::size_t>(step - mText.steps.begin());
        const auto output = outputOf(index, name.text.substr(dot + 1), name.place);
        const bool isMap = value.kind == YamlNode::Kind::Map;
        const YamlNode& file = isMap ? value.required("file", "an output") : value;
        const std::string target = text(file, "a file");
        auto request = at(file.place, [&] { return OutputRequest::make(output, target); });
        request.step = index;
        if (isMap)
            applySettings(value, request, plan.steps[index]);
        plan.outputs.push_back(std::move(request));
    }

    void applySettings(const YamlNode& settings, OutputRequest& request, Step& step) const
    {
        settings.requireKeys(
            {"file", "size", "background", "view", "title", "font-scale", "crop", "arrows"},
            "an output");
        const auto setting = [&](const std::string& key) -> std::optional<std::string>
        {
            const YamlNode* const value = settings.find(key);
            return value == nullptr ? std::nullopt : std::optional(text(*value, "\"" + key + "\""));
        };
        const auto crop = setting("crop");
        request.picture = {.size = setting("size"),
                           .background = setting("background"),
                           .view = setting("view"),
                           .title = setting("title"),
                           .fontScale = setting("font-scale"),
                           .crop = crop == "true"};
        if (crop && crop != "true" && crop != "false")
            settings.find("crop")->place.refuse("\"crop\" is true or false");
        if (!request.isPicture() && !request.picture.isEmpty())
            settings.place.refuse(request.file.string() + " is no picture");
        at(settings.place, [&] { static_cast<void>(request.picture.options()); });
        const auto arrows = setting("arrows");
        if (!arrows)
            return;
        const FilePlace& place = settings.find("arrows")->place;
        const std::size_t maximum = at(place, [&] { return parseMaximumArrows(*arrows); });
        if (!request.isGraphics)
            place.refuse("\"arrows\" is for graphics; \"" + request.port + "\" is data");
        if (step.maximumArrows.value_or(maximum) != maximum)
            place.refuse("another output of the step shows a different number of arrows");
        step.maximumArrows = maximum;
    }

    const PipelineText& mText;
    const Iteration& mIteration;
    /// The declaration of each step.
    std::vector<std::unique_ptr<AlgorithmRun>> mRuns;
};

}

Plan planOf(const PipelineText& text, const Iteration& iteration)
{
    return PipelinePlanner(text, iteration).plan();
}

}
