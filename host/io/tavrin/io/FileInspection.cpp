#include <tavrin/io/FileInspection.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/GridInfo.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/series/Blocks.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace
{

FileInfo inspectBlock(FileAccess& access, const Block& block, const DataReference& reference)
{
    const Block::Step& step = block.steps.front();
    const auto file = openFirst(access, block, reference);
    FileInfo info;
    info.block = block.name;
    info.file = step.place.path;
    info.format = file->format;
    for (const Block::Step& one : block.steps)
        if (const auto known = one.time ? one.time : file->time)
            info.timeSteps.push_back(*known);
    for (const DataFile::Array& array : file->arrays)
    {
        const auto shape = shapeOf(array.components, array.componentNames);
        info.arrays.push_back({array.name, array.association, array.components, array.precision,
                               shape ? valueTypeNameOf(*shape) : ""});
    }
    naming(step.place, [&]
           { describeGrid(*access.build(*file, step.place, reference.dimension).domain, info); });
    return info;
}

/// Summarizes the blocks of a data set.
FileInfo summarize(std::vector<FileInfo> blocks, const FileFormat& format)
{
    FileInfo all;
    all.format = format.name;
    all.dimension = 1;
    for (const FileInfo& block : blocks)
    {
        all.points += block.points;
        all.cells += block.cells;
        for (const auto& [type, count] : block.cellTypes)
            all.cellTypes[type] += count;
        for (const FileInfo::Array& array : block.arrays)
            if (std::ranges::none_of(
                    all.arrays, [&](const FileInfo::Array& other)
                    { return other.name == array.name && other.association == array.association; }))
                all.arrays.push_back(array);
        all.timeSteps.insert(all.timeSteps.end(), block.timeSteps.begin(), block.timeSteps.end());
        // The dimension of a block without points is arbitrary.
        if (block.points > 0)
            all.dimension = std::max(all.dimension, block.dimension);
    }
    std::ranges::sort(all.timeSteps);
    const auto repeated = std::ranges::unique(all.timeSteps);
    all.timeSteps.erase(repeated.begin(), repeated.end());

    for (const FileInfo& block : blocks)
    {
        if (block.points == 0)
            continue;
        auto bounds = block.bounds;
        bounds.resize(all.dimension);
        if (all.bounds.empty())
            all.bounds = bounds;
        for (std::size_t i = 0; i < all.dimension; ++i)
            all.bounds[i] = {std::min(all.bounds[i].first, bounds[i].first),
                             std::max(all.bounds[i].second, bounds[i].second)};
    }
    all.blocks = std::move(blocks);
    return all;
}

/// Warns about the files of all steps that are missing: only the first step is inspected.
void warnAboutSteps(FileAccess& access, const DataReference& reference)
{
    const auto warnOnError = [&](const std::string& member, const auto& work)
    {
        try
        {
            work();
        }
        catch (const std::runtime_error& error)
        {
            access.warn(reference.file, member + error.what());
        }
    };
    warnOnError("",
                [&]
                {
                    for (const Block& block : findBlocks(access, reference))
                        for (const Block::Step& step : block.steps)
                            warnOnError(step.place.member, [&] { requireFile(step.place.path); });
                });
}

}

FileInfo inspectFile(FileAccess& access, const DataReference& reference)
{
    const FilePlace whole(reference.file);
    DataReference meant = reference;
    std::vector<double> times;
    if (isSeries(reference.file))
    {
        const Collection& collection =
            naming(whole, [&]() -> const Collection& { return access.collection(reference.file); });
        for (const Collection::Step& step : collection.steps)
            times.push_back(*step.time);
        if (!meant.time)
            meant.time = times.front();
    }
    std::vector<FileInfo> infos;
    std::ranges::transform(findBlocks(access, meant), std::back_inserter(infos),
                           [&](const Block& block) { return inspectBlock(access, block, meant); });
    FileInfo info = infos.size() == 1 ? std::move(infos.front())
                                      : summarize(std::move(infos), *findFormat(reference.file));
    info.file = reference.file;
    if (times.empty())
        return info;
    info.format = "time series of " + std::to_string(times.size()) +
                  (info.blocks.empty() ? " file" : " step") + (times.size() == 1 ? "" : "s");
    info.timeSteps = times;
    DataReference all = reference;
    all.time.reset();
    warnAboutSteps(access, all);
    return info;
}

}
