#include <tavrin/io/series/Collection.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/series/ListFiles.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <cmath>

namespace tavrin::io
{

namespace
{

using Step = Collection::Step;

/// Groups the files of each time into a step, in ascending order of time.
std::vector<Step> stepsOf(std::vector<ListedFile> files)
{
    for (const ListedFile& file : files)
    {
        if (file.file.empty())
            throw Malformed("a step has no file name");
        if (!std::isfinite(file.time))
            throw Malformed("a time is not finite");
    }
    std::ranges::stable_sort(files, {}, &ListedFile::time);
    std::vector<Step> steps;
    for (ListedFile& file : files)
    {
        if (steps.empty() || steps.back().time != file.time)
            steps.push_back({file.time, {}});
        steps.back().parts.push_back({std::move(file.block), std::move(file.file), {}});
    }
    for (const Step& step : steps)
    {
        std::vector<std::string> names;
        std::ranges::transform(step.parts, std::back_inserter(names), &Collection::Part::name);
        std::ranges::sort(names);
        if (const auto repeated = std::ranges::adjacent_find(names); repeated != names.end())
            throw Malformed("lists several files for t = " + toText(*step.time) +
                            (names.front() == names.back() ? "" : " and part " + *repeated) +
                            "; a step must be one file, or one for each part");
    }
    return steps;
}

/// The blocks of a multi-block file as the parts of a step without a time.
Step blocksOf(std::vector<ListedFile> files)
{
    Step step;
    for (ListedFile& file : files)
        step.parts.push_back({std::move(file.block), std::move(file.file), {}});
    return step;
}

}

Collection readCollection(const std::filesystem::path& path)
{
    const FileFormat& format = *findFormat(path);
    const bool isTimeSeries = format.content == FileContent::TimeSteps;
    std::vector<ListedFile> files = format.readList(path);
    if (files.empty())
        throw Malformed("lists no files");
    Collection collection;
    if (isTimeSeries)
        collection.steps = stepsOf(std::move(files));
    else
        collection.steps.push_back(blocksOf(std::move(files)));
    for (Step& step : collection.steps)
        for (Collection::Part& part : step.parts)
        {
            part.path = path.parent_path() / part.file;
            if (isTimeSeries ? isSeries(part.path) : isList(part.path))
                throw Malformed("lists \"" + part.file + "\", which is a list of files itself");
        }
    return collection;
}

}
