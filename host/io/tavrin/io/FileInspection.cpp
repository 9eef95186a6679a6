#include <tavrin/io/FileInspection.hpp>

#include <tavrin/io/Blocks.hpp>
#include <tavrin/io/Collection.hpp>
#include <tavrin/io/GridInfo.hpp>
#include <tavrin/io/Shape.hpp>

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
    if (const auto known = step.time ? step.time : file->time)
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

/// What several blocks hold together.
FileInfo together(std::vector<FileInfo> blocks)
{
    FileInfo all;
    all.format = "VTK XML multi-block data";
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
        // Without points the dimension that was found says nothing.
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

/// What is missing is worth a word even where it was not asked for.
void warnAboutSteps(FileAccess& access, const DataReference& reference)
{
    const auto warned = [&](const auto& work)
    {
        try
        {
            work();
        }
        catch (const FileError& error)
        {
            access.warn(error.what());
        }
    };
    warned(
        [&]
        {
            for (const Block& block : findBlocks(reference))
                for (const Block::Step& step : block.steps)
                    warned([&] { naming(step.place, [&] { requireFile(step.place.path); }); });
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
        naming(whole, [&] { requireFile(reference.file); });
        for (const Collection::Step& step :
             naming(whole, [&] { return readCollection(reference.file); }).steps)
            times.push_back(*step.time);
        if (!meant.time)
            meant.time = times.front();
    }
    std::vector<FileInfo> infos;
    std::ranges::transform(findBlocks(meant), std::back_inserter(infos),
                           [&](const Block& block) { return inspectBlock(access, block, meant); });
    FileInfo info = infos.size() == 1 ? std::move(infos.front()) : together(std::move(infos));
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
