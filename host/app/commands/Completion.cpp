#include "Completion.hpp"

#include "../plugins/Plugins.hpp"
#include "../text/HelpText.hpp"
#include "FileCandidates.hpp"

#include <tavrin/colormap/ColorMapReference.hpp>
#include <tavrin/graphics/Picture.hpp>
#include <tavrin/io/Formats.hpp>
#include <tavrin/pipeline/AlgorithmCard.hpp>
#include <tavrin/pipeline/NameMatch.hpp>
#include <tavrin/pipeline/OptionAssignment.hpp>
#include <tavrin/pipeline/YamlDocument.hpp>

#include <algorithm>
#include <array>
#include <set>

namespace tavrin::app
{

namespace
{

using namespace pipeline;
using Option = AlgorithmDescription::Option;
using Output = AlgorithmDescription::Output;
using Texts = std::vector<std::string>;

/// The part of a command's usage for the word at an index, such as "FILE", without the brackets of an
/// optional part. What is repeated, as in "ALGORITHM [NAME=VALUE]...", stands for all words from there.
/// Empty where no word is expected.
std::string placeholderAt(std::size_t index, const std::string& usage)
{
    std::size_t first = 0;
    for (;; --index)
    {
        const std::size_t end = std::min(usage.find(' ', first), usage.size());
        std::string part = usage.substr(first, end - first);
        const bool isRepeated = part.ends_with("...");
        if (index == 0 || isRepeated)
        {
            part.resize(part.size() - (isRepeated ? 3 : 0));
            return part.starts_with('[') ? part.substr(1, part.size() - 2) : part;
        }
        if (end == usage.size())
            return {};
        first = end + 1;
    }
}

Texts dividedAtBars(const std::string& text)
{
    Texts parts(1);
    for (const char c : text)
        if (c == '|')
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

Candidates abbreviatedBy(const std::string& typed, const Texts& names)
{
    Candidates candidates;
    for (const std::string& name : namesBeginningAs(typed, names))
        candidates.push_back({name});
    return candidates;
}

/// Whether the value that the algorithm suggests can be asked for by "auto".
bool canBeAutomatic(InputKind kind)
{
    return kind == InputKind::Integer || kind == InputKind::Number || kind == InputKind::Color;
}

/// What the value of an option other than data can be.
Candidates plainValues(const Option& option, const std::string& typed)
{
    if (!option.choices.empty())
        return abbreviatedBy(typed, option.choices);
    if (option.kind == InputKind::Boolean)
        return beginningWith(typed, Texts{"true", "false"});
    Candidates values;
    if (!option.defaultValue.empty())
        values.push_back({option.defaultValue, "default"});
    if (canBeAutomatic(option.kind))
        values.push_back({"auto", "the value that the algorithm suggests"});
    std::erase_if(values, [&](const Candidate& value) { return !value.word.starts_with(typed); });
    return values;
}

Texts extensionsOf(const Output& output)
{
    if (!output.isGraphics)
        return io::writableExtensions();
    Texts extensions = graphics::pictureExtensions();
    extensions.emplace_back(".vtp");
    return extensions;
}

}

Completion::Completion(const ProgramDeclaration& program, const Session& session,
                       const std::vector<std::string>& words)
    : mProgram(program), mSession(session)
{
    for (const std::string& word : words)
        read(word);
}

Candidates Completion::candidatesFor(const std::string& typed)
{
    std::set<std::string> known;
    Candidates found = candidates(typed);
    std::erase_if(found,
                  [&](const Candidate& candidate) { return !known.insert(candidate.word).second; });
    return found;
}

void Completion::read(const std::string& word)
{
    if (mAwaiting)
    {
        if (*mAwaiting == "--plugin")
            mPlugins.push_back(expandedPath(word));
        mAwaiting.reset();
    }
    else if (mIsAfterDashes || word == "-" || !word.starts_with('-'))
    {
        const auto command = std::ranges::find(mProgram.commands, word,
                                               [](const CommandDeclaration& declaration)
                                               { return declaration.text.name; });
        if (mCommand == nullptr && command != mProgram.commands.end())
            mCommand = &*command;
        else
            mWords.push_back(word);
    }
    else if (word == "--")
        mIsAfterDashes = true;
    else if (word.starts_with("--plugin="))
        mPlugins.push_back(expandedPath(word.substr(word.find('=') + 1)));
    else if (const auto option = optionNamed(word); option && !option->value.empty())
        mAwaiting = option->names.back();
}

std::vector<OptionText> Completion::options() const
{
    std::vector<OptionText> all;
    if (mCommand != nullptr)
        all = optionTexts(mCommand->syntax);
    std::ranges::copy(optionTexts(mProgram.syntax), std::back_inserter(all));
    return all;
}

std::optional<OptionText> Completion::optionNamed(const std::string& name) const
{
    for (const OptionText& option : options())
        if (std::ranges::find(option.names, name) != option.names.end())
            return option;
    return std::nullopt;
}

Candidates Completion::candidates(const std::string& typed)
{
    if (mAwaiting)
        return valueCandidates(*optionNamed(*mAwaiting), typed);
    if (!mIsAfterDashes && typed.starts_with('-'))
    {
        const auto equals = typed.find('=');
        if (equals == std::string::npos)
            return optionCandidates(typed);
        const auto option = optionNamed(typed.substr(0, equals));
        return option ? withPrefix(typed.substr(0, equals + 1),
                                   valueCandidates(*option, typed.substr(equals + 1)))
                      : Candidates{};
    }
    return mCommand == nullptr ? commandCandidates(typed) : wordCandidates(typed);
}

Candidates Completion::optionCandidates(const std::string& typed) const
{
    Candidates candidates;
    for (const OptionText& option : options())
        if (option.names.back().starts_with(typed))
            candidates.push_back({option.names.back(), option.description});
    return candidates;
}

Candidates Completion::commandCandidates(const std::string& typed) const
{
    Candidates candidates;
    for (const CommandDeclaration& command : mProgram.commands)
        if (command.text.name.starts_with(typed))
            candidates.push_back({command.text.name, command.text.summary});
    return candidates;
}

/// The usage of a command tells what its words are.
Candidates Completion::wordCandidates(const std::string& typed)
{
    const std::string placeholder = placeholderAt(mWords.size(), mCommand->text.words);
    if (placeholder == "COMMAND")
        return commandCandidates(typed);
    if (placeholder == "ALGORITHM")
        return algorithmCandidates(typed);
    if (placeholder == "NAME=VALUE")
        return assignmentCandidates(typed);
    if (placeholder == "FILE")
        return referenceCandidates(typed, false, mSession.abortFlag);
    if (placeholder == "FILE.yaml")
        return fileCandidates(typed, Texts{".yaml", ".yml", ".json"});
    if (placeholder == "FOLDER")
        return fileCandidates(typed, {});
    return placeholder.empty() ? Candidates{} : beginningWith(typed, dividedAtBars(placeholder));
}

/// The placeholder of an option's value tells what the value is.
Candidates Completion::valueCandidates(const OptionText& option, const std::string& typed)
{
    if (option.value == "PORT=FILE")
        return outputCandidates(typed);
    if (option.value == "NAME=SET")
        return sweepCandidates(typed);
    if (option.value == "VARIABLE=VALUE")
        return settingCandidates(typed);
    if (option.value == "PATH")
        return fileCandidates(typed, Texts{".so"});
    if (option.value == "FILE.json")
        return fileCandidates(typed, Texts{".json"});
    if (option.value == "WHEN")
        return beginningWith(typed, Texts{"auto", "always", "never"});
    if (option.value == "VIEW")
        return beginningWith(typed, Texts{"iso", "x", "-x", "y", "-y", "z", "-z"});
    return {};
}

Candidates Completion::algorithmCandidates(const std::string& typed)
{
    loadPluginsOnce();
    const auto& factories = mSession.algorithms.factories();
    Texts names;
    for (const auto& [name, factory] : factories)
        names.push_back(name);
    std::ranges::sort(names);
    Candidates candidates = abbreviatedBy(typed, names);
    for (Candidate& candidate : candidates)
        for (const auto& [name, factory] : factories)
            if (name == candidate.word)
                candidate.description = factory->getDescription();
    return candidates;
}

Candidates Completion::assignmentCandidates(const std::string& typed)
{
    const AlgorithmCard card = algorithm();
    if (typed.find('=') != std::string::npos)
    {
        const auto divided = DividedAssignment::divide(typed, optionNames(card));
        const auto option = std::ranges::find(card.options, divided.option, &Option::name);
        if (option == card.options.end())
            return {};
        const DataInput* const data = card.dataInput(*option);
        return withPrefix(typed.substr(0, typed.size() - divided.value.size()),
                          data != nullptr ? dataCandidates(*data, divided.value)
                                          : plainValues(*option, divided.value));
    }
    Texts names;
    for (const Option& option : card.options)
        if (option.kind != InputKind::Label)
            names.push_back(option.name);
    Candidates candidates;
    for (const std::string& name : namesBeginningAs(typed, names))
        candidates.push_back(
            {name + '=', std::ranges::find(card.options, name, &Option::name)->help, false});
    return candidates;
}

Candidates Completion::dataCandidates(const DataInput& input, const std::string& typed) const
{
    bool takesColorMap = false;
    bool takesGrid = false;
    bool takesArray = false;
    Candidates candidates;
    for (const DataKind* const kind : input.kinds)
    {
        const bool isColorMap = kind->type == ColorMapDataObject::classTypeId();
        const bool isGrid = kind->type == Domain::classTypeId();
        takesColorMap = takesColorMap || isColorMap;
        takesGrid = takesGrid || isGrid;
        takesArray = takesArray || (!isColorMap && !isGrid);
        append(candidates, beginningWith(typed, kind->offers));
    }
    const std::string pointsOf = "@points:";
    Texts made;
    if (takesGrid)
        made = {"@line:", "@box:", pointsOf};
    if (takesArray)
        made.emplace_back("@constant:");
    for (Candidate candidate : beginningWith(typed, made))
    {
        candidate.isWhole = false;
        candidates.push_back(candidate);
    }
    if (takesGrid && typed.starts_with(pointsOf))
        append(candidates, withPrefix(pointsOf, referenceCandidates(typed.substr(pointsOf.size()),
                                                                    false, mSession.abortFlag)));
    if (takesColorMap)
        append(candidates, fileCandidates(typed, Texts{".json"}));
    if (takesGrid || takesArray)
        append(candidates, referenceCandidates(typed, takesArray, mSession.abortFlag));
    return candidates;
}

Candidates Completion::outputCandidates(const std::string& typed)
{
    const AlgorithmCard card = algorithm();
    Texts names;
    std::ranges::transform(card.outputs, std::back_inserter(names), &Output::name);
    const auto filesOf = [&](const Output& output, const std::string& typedFile)
    { return fileCandidates(typedFile, extensionsOf(output)); };

    if (const auto equals = typed.find('='); equals != std::string::npos)
    {
        const auto name = matchingName(typed.substr(0, equals), names, "output");
        const auto output = std::ranges::find(card.outputs, name.value_or(""), &Output::name);
        return output == card.outputs.end()
                   ? Candidates{}
                   : withPrefix(typed.substr(0, equals + 1),
                                filesOf(*output, typed.substr(equals + 1)));
    }
    Candidates candidates;
    for (const std::string& name : namesBeginningAs(typed, names))
        candidates.push_back({name + '=', "an output of " + card.name, false});
    if (card.outputs.size() == 1 && !typed.empty())
        append(candidates, filesOf(card.outputs.front(), typed));
    return candidates;
}

Candidates Completion::sweepCandidates(const std::string& typed)
{
    const AlgorithmCard card = algorithm();
    Candidates candidates;
    for (const Option& option : card.options)
        if ((option.kind == InputKind::Integer || option.kind == InputKind::Number) &&
            option.name.starts_with(typed))
            candidates.push_back({option.name + '=', option.help, false});
    return candidates;
}

/// The variables of the pipeline on the line; their values are often references.
Candidates Completion::settingCandidates(const std::string& typed) const
{
    if (const auto equals = typed.find('='); equals != std::string::npos)
        return withPrefix(typed.substr(0, equals + 1),
                          referenceCandidates(typed.substr(equals + 1), true, mSession.abortFlag));
    Candidates candidates;
    if (mWords.empty())
        return candidates;
    const YamlNode root = readYaml(expandedPath(mWords.front()));
    const YamlNode* const variables = root.find("variables");
    if (variables == nullptr)
        return candidates;
    for (const auto& [name, value] : variables->entries)
        if (name.text.starts_with(typed))
            candidates.push_back(
                {name.text + '=', value.text.empty() ? "" : "default: " + value.text, false});
    return candidates;
}

void Completion::loadPluginsOnce()
{
    if (!mHasPlugins)
        loadPlugins(mPlugins, mSession.console, mSession.abortFlag);
    mHasPlugins = true;
}

AlgorithmCard Completion::algorithm()
{
    loadPluginsOnce();
    return AlgorithmCard(
        AlgorithmRun(mSession.algorithms,
                     algorithmNamed(mWords.empty() ? "" : mWords.front(), mSession.algorithms)));
}

}
