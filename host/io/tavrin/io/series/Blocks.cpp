#include <tavrin/io/series/Blocks.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/Formats.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <cmath>
#include <map>

namespace tavrin::io
{

namespace
{

/// One file of a step.
struct Member
{
    std::string name;
    FilePlace place;
};

double timeOf(double time)
{
    return time;
}

double timeOf(const Collection::Step& step)
{
    return *step.time;
}

/// The index of the step at a time; steps are given by themselves or by their times. Throws
/// `usage_error`, naming the nearest step, if there is none.
template<typename Step>
std::size_t findStep(const std::vector<Step>& steps, double time)
{
    const auto timeOf = [](const Step& step) { return tavrin::io::timeOf(step); };
    auto found = std::ranges::lower_bound(steps, time, {}, timeOf);
    const bool isBelowNearer =
        found == steps.end() ||
        (found != steps.begin() && time - timeOf(found[-1]) < timeOf(*found) - time);
    if (isBelowNearer)
        --found;
    if (isSameTime(timeOf(*found), time))
        return static_cast<std::size_t>(found - steps.begin());
    std::vector<std::string> times;
    std::ranges::transform(steps, std::back_inserter(times),
                           [&](const Step& step) { return toText(timeOf(step)); });
    throw usage_error("no step at t = " + toText(time) + "; there " +
                      (times.size() == 1 ? "is one step, at " : "are steps at ") +
                      shortList(times) +
                      (times.size() == 1 ? "" : "; the nearest is at " + toText(timeOf(*found))));
}

/// Throws `usage_error` if a time is wanted and the file does not have it.
void requireTime(const DataFile& file, const std::optional<double>& wanted)
{
    if (wanted && !file.time)
        throw usage_error("holds no time steps; leave out ?time=" + toText(*wanted));
    if (wanted && !isSameTime(*file.time, *wanted))
        throw usage_error("no step at t = " + toText(*wanted) + "; there is one step, at " +
                          toText(*file.time));
}

/// The files of a step. A multi-block file is replaced by the files of its blocks.
std::vector<Member> membersOf(FileAccess& access, const std::filesystem::path& list,
                              const Collection::Step& step, const std::string& stepText)
{
    const auto placeOf = [&](const Collection::Part& part, bool isBlock, const std::string& within)
    {
        return FilePlace(part.path, list,
                         stepText + within + (isBlock ? "block \"" + part.name + "\": " : "") +
                             part.file + ": ");
    };
    std::vector<Member> members;
    for (const Collection::Part& part : step.parts)
    {
        const FilePlace place = placeOf(part, !step.time, "");
        if (!isList(part.path))
        {
            members.push_back({part.name, place});
            continue;
        }
        const Collection& blocks =
            naming(place, [&]() -> const Collection& { return access.collection(part.path); });
        const std::string prefix = step.parts.size() > 1 ? part.name + "/" : "";
        for (const Collection::Part& block : blocks.steps.front().parts)
            members.push_back({prefix + block.name, placeOf(block, true, part.file + ": ")});
    }
    return members;
}

/// Puts the members of a later step in the order of the blocks. Throws `Malformed` where the step
/// does not have the same blocks.
void arrange(std::vector<Member>& members, const std::vector<Block>& blocks, double time)
{
    if (std::ranges::equal(members, blocks, {}, &Member::name, &Block::name))
        return;
    const std::string remedy = "; use ?time=" + toText(time) + " to take one step alone";
    std::multimap<std::string, std::size_t> ranks;
    for (std::size_t i = 0; i < blocks.size(); ++i)
        ranks.emplace(blocks[i].name, i);
    std::vector<std::pair<std::size_t, Member>> ranked;
    for (Member& member : members)
    {
        const auto rank = ranks.find(member.name);
        if (rank == ranks.end())
            throw Malformed("has a block \"" + member.name + "\", which step 0 does not have" +
                            remedy);
        ranked.emplace_back(rank->second, std::move(member));
        ranks.erase(rank);
    }
    if (!ranks.empty())
        throw Malformed("has no block \"" + ranks.begin()->first + "\", which step 0 has" + remedy);
    std::ranges::sort(ranked, {}, &std::pair<std::size_t, Member>::first);
    std::ranges::transform(ranked, members.begin(), &std::pair<std::size_t, Member>::second);
}

/// The steps of a file that is no list, of which one may be wanted. Most files have one.
std::vector<Block::Step> stepsOf(FileAccess& access, const FilePlace& place,
                                 const std::optional<double>& wanted)
{
    std::vector<Block::Step> single{{std::nullopt, place}};
    if (const FileFormat* const format = findFormat(place.path);
        format == nullptr || !format->mayHoldSteps())
        return single;
    const std::shared_ptr<DataFile> file = naming(place, [&] { return access.openAgain(place); });
    if (file->stepTimes.empty())
        return single;
    const std::vector<double>& times = file->stepTimes;
    const std::size_t first = wanted ? naming(place, [&] { return findStep(times, *wanted); }) : 0;
    std::vector<Block::Step> steps;
    for (std::size_t step = first; step < (wanted ? first + 1 : times.size()); ++step)
    {
        FilePlace one(place.path, place.named,
                      "step " + std::to_string(step) + " at t = " + toText(times[step]) + ": ");
        one.container = file;
        one.stepInFile = step;
        steps.push_back({times[step], std::move(one)});
    }
    return steps;
}

/// The block of this name or else, where the text is a number, the block of this number.
Block chooseBlock(const std::vector<Block>& blocks, const std::string& wanted)
{
    std::vector<std::string> names;
    std::ranges::transform(blocks, std::back_inserter(names), &Block::name);
    const auto named = std::ranges::find(names, wanted);
    auto index = static_cast<std::size_t>(named - names.begin());
    if (named == names.end())
        index = parseIndex(wanted).value_or(names.size());
    if (index >= blocks.size())
        throw usage_error("no block \"" + wanted + "\"" + suggestionFor(wanted, names));
    return blocks[index];
}

}

std::vector<double> findTimes(FileAccess& access, const DataReference& reference)
{
    std::vector<double> times;
    if (isSeries(reference.file))
    {
        naming(FilePlace(reference.file),
               [&]
               {
                   const Collection& collection = access.collection(reference.file);
                   if (reference.time)
                       times.push_back(
                           *collection.steps[findStep(collection.steps, *reference.time)].time);
                   else
                       for (const Collection::Step& step : collection.steps)
                           times.push_back(*step.time);
               });
        return times;
    }
    for (const Block& block : findBlocks(access, reference))
        for (const Block::Step& step : block.steps)
            if (const auto time = step.time ? step.time : openFirst(access, block, reference)->time)
                times.push_back(*time);
    std::ranges::sort(times);
    const auto repeated = std::ranges::unique(times);
    times.erase(repeated.begin(), repeated.end());
    return times;
}

std::vector<Block> findBlocks(FileAccess& access, const DataReference& reference)
{
    const FilePlace whole(reference.file);
    if (!isList(reference.file))
    {
        naming(whole,
               [&]
               {
                   requireFile(reference.file);
                   if (reference.block)
                       throw usage_error("holds no blocks; leave out ?block=");
               });
        return {{"", stepsOf(access, whole, reference.time)}};
    }

    const Collection& collection =
        naming(whole, [&]() -> const Collection& { return access.collection(reference.file); });
    const bool isSeries = collection.steps.front().time.has_value();
    std::size_t first = 0;
    std::size_t last = collection.steps.size();
    if (isSeries && reference.time)
    {
        first = naming(whole, [&] { return findStep(collection.steps, *reference.time); });
        last = first + 1;
    }
    std::vector<Block> blocks;
    for (std::size_t i = first; i < last; ++i)
    {
        const Collection::Step& step = collection.steps[i];
        const std::string stepText =
            isSeries ? "step " + std::to_string(i) + " at t = " + toText(*step.time) + ": " : "";
        auto members = membersOf(access, reference.file, step, stepText);
        if (i == first)
            std::ranges::transform(members, std::back_inserter(blocks),
                                   [](const Member& member) {
                                       return Block{member.name, {}};
                                   });
        else
            naming(FilePlace(reference.file, reference.file, stepText),
                   [&] { arrange(members, blocks, *step.time); });
        for (std::size_t k = 0; k < blocks.size(); ++k)
            blocks[k].steps.push_back({step.time, std::move(members[k].place)});
    }
    if (reference.block)
        return {naming(whole, [&] { return chooseBlock(blocks, *reference.block); })};
    return blocks;
}

void requireFiles(const std::vector<Block>& blocks)
{
    for (std::size_t step = 0; step < blocks.front().steps.size(); ++step)
        for (const Block& block : blocks)
        {
            const FilePlace& place = block.steps[step].place;
            naming(place, [&] { requireFile(place.path); });
        }
}

std::shared_ptr<DataFile> openFirst(FileAccess& access, const Block& block,
                                    const DataReference& reference)
{
    const Block::Step& step = block.steps.front();
    auto file = naming(step.place, [&] { return access.openAgain(step.place); });
    if (!step.time)
        naming(step.place, [&] { requireTime(*file, reference.time); });
    return file;
}

std::string shortList(const std::vector<std::string>& texts)
{
    constexpr std::size_t maximum = 10;
    std::string text;
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        if (texts.size() > maximum && i == maximum / 2)
        {
            i = texts.size() - maximum / 2;
            text += ", ...";
        }
        text += (text.empty() ? "" : ", ") + texts[i];
    }
    return text;
}

bool isSameTime(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b));
}

}
